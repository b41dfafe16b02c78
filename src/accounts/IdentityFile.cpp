#include "accounts/IdentityFile.h"

#include "base/InPlaceJson.h"

namespace vellumor::IdentityFile {

Identity parse(std::string bytes)
{
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
