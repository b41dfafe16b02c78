#pragma once

#include <optional>
#include <string>
#include <string_view>

// AutostartEntry: the text of the desktop entry that starts the program at login. Users and their
// desktops' settings edit it, too, so whatever else is in it stays. Pure.
namespace vellumor::AutostartEntry {

// False when the entry says that it is hidden or not enabled. Of a key that stands there twice the
// last counts.
[[nodiscard]] bool isOn(std::string_view text);

// The value of Exec that starts exactly `program`, an absolute path in UTF-8.
[[nodiscard]] std::string exec(std::string_view program);

// `text`, which may be empty or no desktop entry at all, such that it starts `program` at login.
[[nodiscard]] std::string switchedOn(std::string_view text, std::string_view program);

// `text`, such that it starts nothing; no text where there is nothing in it to keep.
[[nodiscard]] std::optional<std::string> switchedOff(std::string_view text);

} // namespace vellumor::AutostartEntry
