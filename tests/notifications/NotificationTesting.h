#pragma once

#include "accounts/Account.h"
#include "base/Format.h"
#include "notifications/WindowAnchors.h"

#include <cmath>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// What the tests of the notifications make their readings of.
namespace vellumor::test {

using std::chrono::hours;
using std::chrono::minutes;
using std::chrono::seconds;

inline constexpr Instant morning{seconds(1772443800)}; // Monday 2026-03-02T09:30:00Z
inline const Instant yearOne = *Format::parseISO8601("0001-01-01T00:00:00Z");
inline const Instant yearLast = *Format::parseISO8601("9999-12-31T23:59:59Z");

inline Instant after(double count)
{
    return morning + std::chrono::microseconds(std::llround(count * 1e6));
}

inline LimitWindow window(std::string kind, std::string group, double percent,
                          std::optional<Instant> resetsAt)
{
    LimitWindow made;
    made.kind = std::move(kind);
    made.group = std::move(group);
    made.percent = percent;
    made.resetsAt = resetsAt;
    return made;
}
inline LimitWindow session(double percent, std::optional<Instant> resetsAt)
{
    return window("session", "session", percent, resetsAt);
}
inline LimitWindow weekly(double percent, std::optional<Instant> resetsAt)
{
    return window("weekly_all", "weekly", percent, resetsAt);
}
inline LimitWindow scoped(const std::string& scope, double percent, std::optional<Instant> resetsAt)
{
    LimitWindow made = window("weekly_scoped", "weekly", percent, resetsAt);
    if (!scope.empty())
        made.scope = scope;
    return made;
}
inline LimitWindow opus(double percent, std::optional<Instant> resetsAt)
{
    return window("seven_day_opus", "weekly", percent, resetsAt);
}

inline Usage reading(std::vector<LimitWindow> windows, Instant at = morning)
{
    Usage usage;
    usage.windows = std::move(windows);
    usage.fetchedAt = at;
    return usage;
}

// What `usage` is compared with after `before` alone.
inline std::vector<WindowStep> steps(const Usage& usage, const Usage& before)
{
    WindowAnchors anchors;
    (void)canonicalized(before, anchors);
    return canonicalized(usage, anchors).steps;
}

inline Account account(const std::string& id = "k3f9qz", const std::string& name = "Work")
{
    Account made;
    made.id = id;
    made.displayName = name;
    return made;
}

// "14:05": hour and minute in UTC.
inline std::string hourAndMinute(Instant instant)
{
    return Format::isoWholeSeconds(instant).substr(11, 5);
}

} // namespace vellumor::test
