#include "base/Format.h"
#include "history/Projection.h"

#include <fmt/format.h>

#include <array>
#include <ctime>

namespace vellumor {

namespace {

constexpr std::array<const char*, 7> weekdays = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                                 "Thursday", "Friday", "Saturday"};

std::tm localTime(Instant instant)
{
    const std::time_t seconds =
        std::chrono::floor<std::chrono::seconds>(instant).time_since_epoch().count();
    std::tm fields{};
    ::tzset(); // the user may have gone to another zone
    ::localtime_r(&seconds, &fields);
    return fields;
}

bool isSameDay(const std::tm& a, const std::tm& b)
{
    return a.tm_year == b.tm_year && a.tm_yday == b.tm_yday;
}

} // namespace

std::string Projection::phrase(Instant now,
                               const std::function<std::string(Instant)>& shortTime) const
{
    if (const auto* onPace = std::get_if<OnPace>(&form))
        return fmt::format("on pace for ~{}% by reset", onPace->percent);
    const Instant moment = std::get<Eta>(form).moment;
    const std::tm day = localTime(moment);
    std::string weekday;
    if (!isSameDay(day, localTime(now)))
        weekday = std::string(weekdays.at(static_cast<std::size_t>(day.tm_wday))) + " ";
    return "on pace to hit the limit ~" + weekday + shortTime(moment);
}

std::string Projection::summary(Instant now) const
{
    if (const auto* onPace = std::get_if<OnPace>(&form))
        return fmt::format("{} ~{}% by reset", windowTitle, onPace->percent);
    return windowTitle + " limit in " + Format::countdown(std::get<Eta>(form).moment, now);
}

} // namespace vellumor
