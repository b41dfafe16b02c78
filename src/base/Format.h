#pragma once

#include "base/Instant.h"

#include <optional>
#include <string>
#include <string_view>

// Format: the small texts that files and screens share. Pure; independent of the process's locale.
namespace vellumor::Format {

// Reads an RFC 3339 date-time: "2026-03-01T09:30:00Z", or with an offset that has a colon. Three
// and six digits of fraction are kept; any other fraction is dropped, whatever it is made of.
// Lower-case letters, a leap second, an offset without a colon, a fraction without a zone and a
// moment outside the years 1 to 9999 in UTC are refused.
[[nodiscard]] std::optional<Instant> parseISO8601(std::string_view text);

// The same without any fraction: the form that isoWholeSeconds writes.
[[nodiscard]] std::optional<Instant> parseISO8601WholeSeconds(std::string_view text);

// "2026-03-01T09:30:00.125Z": UTC, three digits, cut and not rounded.
[[nodiscard]] std::string isoFractional(Instant instant);

// "2026-03-01T09:30:00Z": UTC, the fraction cut off.
[[nodiscard]] std::string isoWholeSeconds(Instant instant);

// Time left: "now", "1m", "59m", "1h 1m", "1d 1h".
[[nodiscard]] std::string countdown(Instant to, Instant from);

// Age: "just now", "5m ago", "3h ago", "2d ago".
[[nodiscard]] std::string relativeAge(Instant of, Instant from);

// Rounded to the nearest integer, halves away from zero: "63"; never "-0".
[[nodiscard]] std::string wholeText(double value);

// The same with its sign; a negative value counts as 0: "63%".
[[nodiscard]] std::string percentText(double percent);

} // namespace vellumor::Format
