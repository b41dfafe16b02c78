#pragma once

#include <optional>
#include <string>
#include <vector>

// ClaudeBinary: where the `claude` program may lie. What looks at the disk says so, and blocks.
namespace vellumor::ClaudeBinary {

// What is known about it; an absent or empty text is no candidate.
struct Hints {
    std::optional<std::string> override;   // VELLUMOR_CLAUDE_PATH
    std::optional<std::string> preference; // the user's choice
    std::optional<std::string> whichPath;  // what the login shell finds
    std::optional<std::string> persisted;  // what was found the last time
    std::string home;
    std::vector<std::string> nvmPaths;
    std::vector<std::string> bundledPaths;
};

// All paths to try, best first, each once. Pure.
[[nodiscard]] std::vector<std::string> candidates(const Hints& hints);

// By the numbers in each name, the larger first; a missing number counts as 0, and where all are
// equal the later text comes first. Pure.
[[nodiscard]] std::vector<std::string> versionSortedDescending(std::vector<std::string> names);

// What Node's version manager has installed, newest first. Lists a folder.
[[nodiscard]] std::vector<std::string> globbedNvmPaths(const std::string& home);
// What comes with the extension for VS Code, newest first. Lists a folder.
[[nodiscard]] std::vector<std::string> globbedBundledPaths(const std::string& home);

} // namespace vellumor::ClaudeBinary
