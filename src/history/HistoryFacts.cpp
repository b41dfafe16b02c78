#include "history/HistoryFacts.h"

#include "base/Format.h"
#include "base/LocalTime.h"

#include <fmt/format.h>

namespace vellumor::HistoryFacts {

namespace {

constexpr std::size_t shortWeekday = 3; // letters

} // namespace

std::string coverageLine(double fraction, std::string_view of)
{
    return fmt::format("Watched ~{}% of {}", Format::wholeText(fraction * 100), of);
}

std::string peakPhrase(double percent, Instant at, const ShortTime& shortTime)
{
    return "Peak " + Format::wholeText(percent) + "% · " + weekdayTime(at, shortTime);
}

std::optional<std::string> resetsPhrase(int count)
{
    if (count < 1)
        return std::nullopt;
    return fmt::format("At least {} reset{} seen", count, count == 1 ? "" : "s");
}

std::string weekdayTime(Instant moment, const ShortTime& shortTime)
{
    return LocalTime::weekday(moment).substr(0, shortWeekday) + " " + shortTime(moment);
}

std::string weekSpan(Instant start, Instant end)
{
    return LocalTime::monthAndDay(start) + " – " + LocalTime::monthAndDay(end);
}

} // namespace vellumor::HistoryFacts
