#pragma once

#include <string>
#include <string_view>

// ConfigDir: the one spelling of a config directory. Pure.
namespace vellumor::ConfigDir {

// A leading tilde becomes `home`, the text is brought to composed Unicode (NFC), trailing slashes
// go; links are not resolved, since Claude Code hashes the path as it was given. Empty when `path`
// is empty or not valid UTF-8.
[[nodiscard]] std::string canonical(std::string_view path, const std::string& home);

// What an account is called for want of anything better: ".claude" gives "Default", ".claude-work"
// gives "Work".
[[nodiscard]] std::string derivedName(std::string_view path);

} // namespace vellumor::ConfigDir
