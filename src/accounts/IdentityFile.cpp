#include "accounts/IdentityFile.h"

#include "base/InPlaceJson.h"

#include <charconv>

namespace vellumor::IdentityFile {

namespace {

// The UTF-16 unit that "\uXXXX" at `at` stands for; 0 when no such text is there.
unsigned unitAt(const std::string& json, std::size_t at)
{
    if (at + 6 > json.size() || json[at] != '\\' || json[at + 1] != 'u')
        return 0;
    unsigned unit = 0;
    const char* const begin = json.data() + at + 2;
    const auto [end, error] = std::from_chars(begin, begin + 4, unit, 16);
    return error == std::errc() && end == begin + 4 ? unit : 0;
}

// Claude Code keeps prompts in the file, and cuts them by UTF-16 units: half a pair, which no
// decoder takes, becomes the sign for what cannot be read, so that it spoils nothing else.
void mendHalfPairs(std::string& json)
{
    std::size_t at = json.find('\\');
    while (at != std::string::npos) {
        const unsigned unit = unitAt(json, at);
        const unsigned next = unit >= 0xD800 && unit <= 0xDBFF ? unitAt(json, at + 6) : 0;
        const bool isPair = next >= 0xDC00 && next <= 0xDFFF;
        if (unit >= 0xD800 && unit <= 0xDFFF && !isPair)
            json.replace(at + 2, 4, "fffd");
        at = json.find('\\', at + (isPair ? 12 : 2)); // behind "\\" or the like
    }
}

} // namespace

Identity parse(std::string bytes)
{
    mendHalfPairs(bytes);
    const InPlaceJson json(bytes.data(), bytes.size());
    const auto* account = InPlaceJson::find(json.root(), "oauthAccount");
    const auto text = [&](const char* key) -> std::optional<std::string> {
        const auto* value = InPlaceJson::find(account, key);
        const auto found = value == nullptr ? std::nullopt : InPlaceJson::textOf(*value);
        return found ? std::optional<std::string>(*found) : std::nullopt;
    };
    return {text("emailAddress"), text("organizationName"), text("displayName"),
            text("organizationType")};
}

std::optional<std::string> planLabel(const std::optional<std::string>& orgType,
                                     const std::optional<std::string>& subscription)
{
    if (orgType == "claude_max")
        return "Max";
    if (orgType == "claude_pro")
        return "Pro";
    if (orgType == "claude_team")
        return "Team";
    return subscription;
}

} // namespace vellumor::IdentityFile
