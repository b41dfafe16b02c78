#include "notifications/Thresholds.h"

#include "base/Format.h"
#include "notifications/AlertKey.h"

#include <algorithm>
#include <array>
#include <map>

namespace vellumor {

namespace {

struct Row {
    Threshold threshold;
    std::string_view name;
    double level;
    bool Preferences::*isOn;
};
constexpr std::array rows = {
    Row{Threshold::session50, "session50", 50, &Preferences::notifySession50},
    Row{Threshold::session90, "session90", 90, &Preferences::notifySession90},
    Row{Threshold::weekly50, "weekly50", 50, &Preferences::notifyWeekly50},
    Row{Threshold::weekly90, "weekly90", 90, &Preferences::notifyWeekly90},
    Row{Threshold::sessionLimit, "sessionLimit", 100, &Preferences::notifySessionLimit},
    Row{Threshold::weeklyLimit, "weeklyLimit", 100, &Preferences::notifyWeeklyLimit},
};

const Row& row(Threshold threshold)
{
    return rows.at(static_cast<std::size_t>(threshold));
}

} // namespace

std::string_view name(Threshold threshold)
{
    return row(threshold).name;
}

double level(Threshold threshold)
{
    return row(threshold).level;
}

bool isOn(Threshold threshold, const Preferences& preferences)
{
    return preferences.*(row(threshold).isOn);
}

namespace Thresholds {

namespace {

constexpr std::array ofSession = {Threshold::session50, Threshold::session90,
                                  Threshold::sessionLimit};
constexpr std::array ofWeek = {Threshold::weekly50, Threshold::weekly90, Threshold::weeklyLimit};

// Of one account.
struct Crossings {
    const std::string& accountId;
    const std::set<std::string>& alreadyFired;
    std::vector<Fire> fires;

    void take(Threshold threshold, const WindowStep& step)
    {
        const LimitWindow& window = step.window;
        if (!window.resetsAt || !(step.prior < level(threshold)) ||
            !(window.percent >= level(threshold)))
            return;
        std::string key = AlertKey::of(
            {"thr-" + std::string(name(threshold)), accountId, step.name}, *window.resetsAt);
        if (alreadyFired.contains(key))
            return;
        fires.push_back({threshold, step.name, LimitWindow::title(window.kind, window.scope),
                         window.percent, window.resetsAt, std::move(key)});
    }
};

bool isOfSession(const WindowStep& step)
{
    return step.window.kind == "session";
}

} // namespace

std::vector<Fire> newlyFired(const std::string& accountId, const std::vector<WindowStep>& steps,
                             const Preferences& preferences,
                             const std::set<std::string>& alreadyFired)
{
    Crossings crossings{accountId, alreadyFired, {}};
    const auto session = std::ranges::find_if(steps, isOfSession);
    for (const Threshold threshold : ofSession) {
        if (session != steps.end() && isOn(threshold, preferences))
            crossings.take(threshold, *session);
    }
    for (const Threshold threshold : ofWeek) {
        if (!isOn(threshold, preferences))
            continue;
        for (const WindowStep& step : steps) {
            if (!isOfSession(step))
                crossings.take(threshold, step);
        }
    }
    return std::move(crossings.fires);
}

std::set<std::string> subsumedKeys(const std::vector<Fire>& fires)
{
    std::map<std::string, double> highest; // by window
    for (const Fire& fire : fires) {
        double& known = highest[fire.windowKind];
        known = std::max(known, level(fire.threshold));
    }
    std::set<std::string> keys;
    for (const Fire& fire : fires) {
        if (level(fire.threshold) < highest.at(fire.windowKind))
            keys.insert(fire.key);
    }
    return keys;
}

std::string body(const Fire& fire, const std::string& accountName, Instant now)
{
    const std::string start = accountName + " · " + fire.windowTitle;
    if (fire.threshold == Threshold::sessionLimit || fire.threshold == Threshold::weeklyLimit) {
        const bool isAhead = fire.resetsAt && *fire.resetsAt > now;
        return start + " limit reached" +
               (isAhead ? " — resets in " + Format::countdown(*fire.resetsAt, now) : "");
    }
    return start + " usage crossed " + Format::wholeText(level(fire.threshold)) + "% (now " +
           Format::wholeText(fire.value) + "%)";
}

} // namespace Thresholds

} // namespace vellumor
