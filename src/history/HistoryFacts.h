#pragma once

#include "base/Instant.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>

// HistoryFacts: what is known of a week, in words. Weekdays and months in English. Pure, but for
// the time zone.
namespace vellumor::HistoryFacts {

// A moment's hour and minute as the user writes them.
using ShortTime = std::function<std::string(Instant)>;

// "Watched ~87% of the week".
[[nodiscard]] std::string coverageLine(double fraction, std::string_view of);
// "Peak 93% · Fri 4:30 PM".
[[nodiscard]] std::string peakPhrase(double percent, Instant at, const ShortTime& shortTime);
// "At least 2 resets seen"; nothing for none.
[[nodiscard]] std::optional<std::string> resetsPhrase(int count);
// "Fri 4:30 PM".
[[nodiscard]] std::string weekdayTime(Instant moment, const ShortTime& shortTime);
// "Nov 14 – Nov 21".
[[nodiscard]] std::string weekSpan(Instant start, Instant end);

} // namespace vellumor::HistoryFacts
