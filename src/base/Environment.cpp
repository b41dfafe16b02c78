#include "base/Environment.h"

namespace vellumor {

Environment readEnvironment(const char* const* entries)
{
    Environment environment;
    for (; entries != nullptr && *entries != nullptr; ++entries) {
        const std::string_view entry(*entries);
        const auto equals = entry.find('=');
        if (equals != std::string_view::npos)
            environment.emplace(entry.substr(0, equals), entry.substr(equals + 1));
    }
    return environment;
}

std::optional<std::string> value(const Environment& environment, std::string_view name)
{
    const auto found = environment.find(name);
    if (found == environment.end() || found->second.empty())
        return std::nullopt;
    return found->second;
}

} // namespace vellumor
