#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace vellumor {

// A moment, in microseconds since 1970-01-01 00:00:00 UTC. Files keep its milliseconds, so moments
// that are to survive a round trip are read from the clock in whole milliseconds.
using Instant = std::chrono::sys_time<std::chrono::microseconds>;

// Seconds since 1970, with their fraction.
[[nodiscard]] double secondsSince1970(Instant instant);

// Rounded to the microsecond. A number beyond the years 1 to 9999 gives the nearer end of that
// range, NaN the lower.
[[nodiscard]] Instant instantFromSeconds(double secondsSince1970);

// `later` minus `earlier`, in seconds; negative when they stand the other way round.
[[nodiscard]] double secondsBetween(Instant earlier, Instant later);

} // namespace vellumor
