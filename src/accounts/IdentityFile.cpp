#include "accounts/IdentityFile.h"

#include "base/Json.h"
#include "base/StrictReader.h"

namespace vellumor::IdentityFile {

Identity parse(std::string_view bytes)
{
    const auto json = parseJsonObject(bytes);
    if (!json)
        return {};
    const auto account = json->find("oauthAccount");
    if (account == json->end() || !account->is_object())
        return {};
    const auto text = [&](const char* key) { return asString(account->value(key, Json())); };
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
