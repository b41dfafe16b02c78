#include "telemetry/OsRelease.h"

#include "base/Text.h"

#include <algorithm>

namespace vellumor::OsRelease {

namespace {

std::string unquoted(std::string_view text)
{
    const char quote = text.empty() ? '\0' : text.front();
    if (quote != '"' && quote != '\'')
        return std::string(text);
    text.remove_prefix(1);
    std::string result;
    for (std::size_t at = 0; at < text.size() && text[at] != quote; ++at) {
        if (quote == '"' && text[at] == '\\' && at + 1 < text.size())
            ++at;
        result += text[at];
    }
    return result;
}

} // namespace

std::string value(std::string_view text, std::string_view key)
{
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        const auto equals = line.find('=');
        if (equals != std::string_view::npos && Text::trimmed(line.substr(0, equals)) == key)
            return unquoted(Text::trimmed(line.substr(equals + 1)));
    }
    return {};
}

std::string nameAndVersion(std::string_view text)
{
    std::string name = value(text, "ID");
    if (name.empty())
        name = "linux";
    const std::string version = value(text, "VERSION_ID");
    return version.empty() ? name : name + " " + version;
}

} // namespace vellumor::OsRelease
