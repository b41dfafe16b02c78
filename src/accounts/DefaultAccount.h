#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// DefaultAccount: what is special about Claude Code's default directory, ~/.claude. Pure. `home` is
// the home folder, directories are canonical.
namespace vellumor::DefaultAccount {

[[nodiscard]] bool isDefault(std::string_view path, const std::string& home);

// Where the default directory's identity file lies: beside the directory, not in it. Nothing for
// any other directory.
[[nodiscard]] std::optional<std::string>
identityFallback(std::string_view dir, std::string_view oauthSuffix, const std::string& home);

// The service names under which a directory's credential may be kept, best first: the plain one and
// the hashed one for the default directory, the hashed one alone for any other.
[[nodiscard]] std::vector<std::string> serviceCandidates(const std::string& absConfigDir,
                                                         const std::string& home);

// The service whose credential file lies in the directory itself.
[[nodiscard]] std::string fileService(const std::string& absConfigDir, const std::string& home);

} // namespace vellumor::DefaultAccount
