#include "base/Format.h"
#include "base/LocalTime.h"
#include "history/Projection.h"

#include <fmt/format.h>

namespace vellumor {

std::string Projection::phrase(Instant now,
                               const std::function<std::string(Instant)>& shortTime) const
{
    if (const auto* onPace = std::get_if<OnPace>(&form))
        return fmt::format("on pace for ~{}% by reset", onPace->percent);
    return "on pace to hit the limit ~" + momentText(std::get<Eta>(form).moment, now, shortTime);
}

std::string Projection::momentText(Instant moment, Instant now,
                                   const std::function<std::string(Instant)>& shortTime)
{
    const std::string weekday =
        LocalTime::isSameDay(moment, now) ? "" : LocalTime::weekday(moment) + " ";
    return weekday + shortTime(moment);
}

std::string Projection::summary(Instant now) const
{
    if (const auto* onPace = std::get_if<OnPace>(&form))
        return fmt::format("{} ~{}% by reset", windowTitle, onPace->percent);
    return windowTitle + " limit in " + Format::countdown(std::get<Eta>(form).moment, now);
}

} // namespace vellumor
