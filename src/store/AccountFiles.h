#pragma once

#include <string>
#include <vector>

// AccountFiles: folders that hold one file an account, named after its config directory. 32 bits of
// name are enough for the accounts of one user; a collision is not handled.
namespace vellumor::AccountFiles {

// "<dir>/<first eight digits of the hash>.json"; the same for every Unicode composition.
[[nodiscard]] std::string path(const std::string& dir, const std::string& configDir);

// Removes every entry of `dir` whose name ends in ".json" and is no file of a kept account. What
// cannot be listed or removed stays, silently.
void prune(const std::string& dir, const std::vector<std::string>& keptConfigDirs);

} // namespace vellumor::AccountFiles
