#include "telemetry/TelemetryBuckets.h"

#include "base/Format.h"

#include <algorithm>
#include <array>

namespace vellumor::TelemetryBuckets {

namespace {

constexpr std::array<std::string_view, 10> gravestFirst = {
    "no_service", "keychain_read_fail", "token_expired",  "usage_403",  "usage_401",
    "usage_429",  "usage_http_error",   "transport_fail", "parse_fail", "cache_write_fail",
};

bool isOver(std::chrono::days days, Instant since, Instant now)
{
    return now - since >= days;
}

} // namespace

std::string utcDay(Instant instant)
{
    return Format::isoWholeSeconds(instant).substr(0, 10);
}

std::string_view count(int count)
{
    if (count <= 0)
        return "0";
    if (count <= 5)
        return "1-5";
    return count <= 20 ? "6-20" : "20+";
}

std::string_view accounts(std::size_t count)
{
    constexpr std::array<std::string_view, 5> few = {"0", "1", "2", "3-4", "3-4"};
    return count < few.size() ? few[count] : "5+";
}

std::string_view installAge(Instant installedAt, Instant now)
{
    if (!isOver(std::chrono::days(1), installedAt, now))
        return "new";
    if (!isOver(std::chrono::days(7), installedAt, now))
        return "week";
    return isOver(std::chrono::days(30), installedAt, now) ? "older" : "month";
}

std::string_view countingDays(Instant since, Instant now)
{
    if (!isOver(std::chrono::days(2), since, now))
        return "1";
    return isOver(std::chrono::days(8), since, now) ? "8+" : "2-7";
}

std::string_view worstCategory(const std::vector<std::string>& categories)
{
    for (const std::string_view category : gravestFirst) {
        if (std::find(categories.begin(), categories.end(), category) != categories.end())
            return category;
    }
    return "none";
}

std::string_view yesOrNo(bool value)
{
    return value ? "yes" : "no";
}

} // namespace vellumor::TelemetryBuckets
