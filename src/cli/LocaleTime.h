#pragma once

#include "base/Instant.h"

#include <ctime>
#include <optional>
#include <string>
#include <string_view>

// LocaleTime: a moment's hour and minute as the locale of the process (LC_TIME) writes them, which
// main takes from the environment.
namespace vellumor::LocaleTime {

// "15:05", "3:05 PM", in the user's time zone.
[[nodiscard]] std::string shortText(Instant instant);

// A pattern of strftime without seconds, what parts them, and the zone: "%H:%M:%S %Z" gives
// "%H:%M".
[[nodiscard]] std::string shortened(std::string_view pattern);

// A time of day by such a pattern, with `half` for the half of the day. Nothing when there is more
// in it than that, the hour and the minute, or words of no ASCII.
[[nodiscard]] std::optional<std::string> text(std::string_view pattern, const std::tm& fields,
                                              std::string_view half);

} // namespace vellumor::LocaleTime
