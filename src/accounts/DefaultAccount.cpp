#include "accounts/DefaultAccount.h"

#include "accounts/ConfigDir.h"
#include "base/Sha256.h"

namespace vellumor::DefaultAccount {

namespace {

constexpr std::string_view plainService = "Claude Code-credentials";

std::string hashedService(const std::string& absConfigDir)
{
    return std::string(plainService) + "-" + Sha256::first8Hex(absConfigDir);
}

} // namespace

bool isDefault(std::string_view path, const std::string& home)
{
    return ConfigDir::canonical(path, home) == ConfigDir::canonical("~/.claude", home);
}

std::optional<std::string> identityFallback(std::string_view dir, std::string_view oauthSuffix,
                                            const std::string& home)
{
    if (!isDefault(dir, home))
        return std::nullopt;
    return home + "/.claude" + std::string(oauthSuffix) + ".json";
}

std::vector<std::string> serviceCandidates(const std::string& absConfigDir, const std::string& home)
{
    if (isDefault(absConfigDir, home))
        return {std::string(plainService), hashedService(absConfigDir)};
    return {hashedService(absConfigDir)};
}

std::string fileService(const std::string& absConfigDir, const std::string& home)
{
    return serviceCandidates(absConfigDir, home).front();
}

} // namespace vellumor::DefaultAccount
