#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace vellumor {

// The process environment as it stood when main began: name to value.
using Environment = std::map<std::string, std::string, std::less<>>;

// Reads the form that the system hands to main: an array of "NAME=value", ended by a null pointer.
// Entries without an equals sign are left out; of two entries with one name the first counts.
[[nodiscard]] Environment readEnvironment(const char* const* entries);

// The value of `name`, or nothing when it is unset or empty.
[[nodiscard]] std::optional<std::string> value(const Environment& environment,
                                               std::string_view name);

} // namespace vellumor
