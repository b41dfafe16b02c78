#pragma once

#include "notifications/NotificationManager.h"
#include "notifications/NotificationTesting.h"

#include "support/ScopedZone.h"

#include <utility>
#include <vector>

namespace vellumor::test {

using Told = std::vector<std::string>; // the bodies, in the order in which they came

inline constexpr bool Preferences::*alertSwitches[] = {
    &Preferences::notifySession50,        &Preferences::notifySession90,
    &Preferences::notifyWeekly50,         &Preferences::notifyWeekly90,
    &Preferences::notifySessionLimit,     &Preferences::notifyWeeklyLimit,
    &Preferences::notifyQuotaReset,       &Preferences::notifyProjectedWeekly,
    &Preferences::notifyProjectedSession, &Preferences::notifyCreditBurn,
    &Preferences::notifySessionClosing,
};

// Notifications are on, and of the alerts only these.
inline Preferences only(std::initializer_list<bool Preferences::*> switches)
{
    Preferences preferences;
    preferences.notificationsEnabled = true;
    for (const auto alert : alertSwitches)
        preferences.*alert = false;
    for (const auto alert : switches)
        preferences.*alert = true;
    return preferences;
}

inline Preferences everything()
{
    Preferences preferences;
    preferences.notificationsEnabled = true;
    for (const auto alert : alertSwitches)
        preferences.*alert = true;
    return preferences;
}

inline Preferences everythingButForecasts()
{
    Preferences preferences = everything();
    preferences.notifyProjectedWeekly = preferences.notifyProjectedSession = false;
    return preferences;
}

// A manager, a clock that stands where the last reading put it or besides, and what the desktop was
// given.
struct NotifiedWorld {
    ScopedZone zone{"UTC"};
    Instant now = morning;
    seconds ahead{}; // of the reading's own time
    Told told;
    Told titles;
    Preferences preferences = everythingButForecasts();
    Account work = account();
    double interval = 120;
    UsageSamples history;
    NotificationManager manager{{[this](const std::string& title, const std::string& body) {
                                     titles.push_back(title);
                                     told.push_back(body);
                                 },
                                 [this] { return now; }, hourAndMinute}};

    Told observe(const Usage& usage, std::optional<UsageSource> source = UsageSource::endpoint)
    {
        return observe(work, usage, source);
    }
    Told observe(const Account& who, const Usage& usage,
                 std::optional<UsageSource> source = UsageSource::endpoint)
    {
        now = usage.fetchedAt + ahead;
        manager.observe(who, usage, source, preferences, history, interval);
        return taken();
    }
    Told taken() { return std::exchange(told, {}); }
};

} // namespace vellumor::test
