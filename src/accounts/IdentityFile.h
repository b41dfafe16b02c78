#pragma once

#include <optional>
#include <string>

// IdentityFile: who is signed in to a config directory, from the file that Claude Code keeps about
// it. Pure.
namespace vellumor::IdentityFile {

struct Identity {
    std::optional<std::string> email;
    std::optional<std::string> org;
    std::optional<std::string> displayName;
    std::optional<std::string> orgType;
    bool operator==(const Identity&) const = default;
};

// What is missing, of another type or not to be read is absent; an empty text is a value.
[[nodiscard]] Identity parse(std::string bytes);

// "Max", "Pro" or "Team" for the organisation types that are known, otherwise `subscription` as it
// stands.
[[nodiscard]] std::optional<std::string> planLabel(const std::optional<std::string>& orgType,
                                                   const std::optional<std::string>& subscription);

} // namespace vellumor::IdentityFile
