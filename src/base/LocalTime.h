#pragma once

#include "base/Instant.h"

#include <ctime>
#include <optional>
#include <string>

// LocalTime: moments as a calendar of the user's present time zone shows them. The zone is looked
// up at each call, since the user may have gone to another one.
namespace vellumor::LocalTime {

[[nodiscard]] std::tm fields(Instant instant);

// Whether `instant` falls on the calendar day that lies `days` after that of `base`.
[[nodiscard]] bool isDaysAfter(Instant instant, int days, Instant base);
[[nodiscard]] inline bool isSameDay(Instant a, Instant b)
{
    return isDaysAfter(a, 0, b);
}

// When the calendar day `days` after that of `instant` begins; nothing beyond the calendar.
[[nodiscard]] std::optional<Instant> startOfDay(Instant instant, int days);

// "Friday": always in English.
[[nodiscard]] std::string weekday(Instant instant);

// "Nov 28, 3:05 PM" comes of these two: "Nov 28" and "3:05 PM", always in English.
[[nodiscard]] std::string monthAndDay(Instant instant);
[[nodiscard]] std::string twelveHourTime(Instant instant);

} // namespace vellumor::LocalTime
