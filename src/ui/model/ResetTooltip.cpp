#include "ui/model/ResetTooltip.h"

#include "base/LocalTime.h"

namespace vellumor::ResetTooltip {

namespace {

constexpr double sixDays = 518400.0; // seconds; a seventh would name today's weekday

std::string dayOf(Instant date, Instant now)
{
    if (LocalTime::isSameDay(date, now))
        return "today";
    if (LocalTime::isDaysAfter(date, 1, now))
        return "tomorrow";
    const double ahead = secondsBetween(now, date);
    if (ahead >= 0 && ahead <= sixDays)
        return LocalTime::weekday(date);
    return LocalTime::monthAndDay(date);
}

} // namespace

std::string instant(Instant date, Instant now)
{
    return dayOf(date, now) + " at " + LocalTime::twelveHourTime(date);
}

std::optional<std::string> text(const LimitWindow& window, std::optional<Instant> estimatedReset,
                                Instant now)
{
    if (window.resetsAt)
        return "Resets " + instant(*window.resetsAt, now);
    if (window.kind == "session")
        return "No session is running. The 5-hour session window starts with your first message.";
    if (estimatedReset)
        return "Estimated to reset " + instant(*estimatedReset, now) +
               " based on this window's last observed reset.";
    return std::nullopt;
}

} // namespace vellumor::ResetTooltip
