#include "base/LocalTime.h"

#include <fmt/format.h>

#include <array>

namespace vellumor::LocalTime {

namespace {

constexpr std::array<const char*, 7> weekdays = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                                 "Thursday", "Friday", "Saturday"};
constexpr std::array<const char*, 12> months = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

using Days = std::chrono::sys_days;

// The calendar day by itself, so that days can be counted whatever the clocks do.
Days day(Instant instant)
{
    const std::tm local = fields(instant);
    return Days(std::chrono::year(local.tm_year + 1900) /
                std::chrono::month(static_cast<unsigned>(local.tm_mon + 1)) /
                std::chrono::day(static_cast<unsigned>(local.tm_mday)));
}

} // namespace

std::tm fields(Instant instant)
{
    const std::time_t seconds =
        std::chrono::floor<std::chrono::seconds>(instant).time_since_epoch().count();
    std::tm local{};
    ::tzset();
    ::localtime_r(&seconds, &local);
    return local;
}

bool isDaysAfter(Instant instant, int days, Instant base)
{
    return day(instant) == day(base) + std::chrono::days(days);
}

std::optional<Instant> startOfDay(Instant instant, int days)
{
    std::tm local = fields(instant);
    local.tm_hour = local.tm_min = local.tm_sec = 0;
    local.tm_mday += days;
    local.tm_isdst = -1; // whichever holds on that day
    local.tm_wday = -1;  // tells a failure from the second before 1970
    const std::chrono::seconds seconds(::mktime(&local));
    if (local.tm_wday < 0 ||
        seconds > std::chrono::floor<std::chrono::seconds>(Instant::max().time_since_epoch()))
        return std::nullopt;
    const Instant start(seconds);
    // Where the clocks go back over midnight, that comes twice, and mktime gives either.
    const Instant before = start - std::chrono::seconds(1);
    if (!isSameDay(before, start))
        return start;
    return start - std::chrono::seconds(fields(before).tm_gmtoff - fields(start).tm_gmtoff);
}

std::string weekday(Instant instant)
{
    return weekdays.at(static_cast<std::size_t>(fields(instant).tm_wday));
}

std::string monthAndDay(Instant instant)
{
    const std::tm local = fields(instant);
    return fmt::format("{} {}", months.at(static_cast<std::size_t>(local.tm_mon)), local.tm_mday);
}

std::string twelveHourTime(Instant instant)
{
    const std::tm local = fields(instant);
    const int hour = local.tm_hour % 12 == 0 ? 12 : local.tm_hour % 12;
    return fmt::format("{}:{:02} {}", hour, local.tm_min, local.tm_hour < 12 ? "AM" : "PM");
}

} // namespace vellumor::LocalTime
