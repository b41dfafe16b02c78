#include "notifications/Thresholds.h"

#include "base/Format.h"
#include "notifications/AlertKey.h"
#include "notifications/WindowAnchors.h"

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

// What one reading is compared with.
struct Crossing {
    const std::string& accountId;
    const Usage& previous;
    const std::set<std::string>& alreadyFired;

    [[nodiscard]] std::optional<Fire> fire(Threshold threshold, const LimitWindow& window) const
    {
        if (!window.resetsAt)
            return std::nullopt;
        const double prior =
            sameWindowPercent(windowOf(previous, window.kind), window.kind, *window.resetsAt);
        std::string key = AlertKey::of(
            {"thr-" + std::string(name(threshold)), accountId, window.kind}, *window.resetsAt);
        if (!(prior < level(threshold)) || !(window.percent >= level(threshold)) ||
            alreadyFired.contains(key))
            return std::nullopt;
        return Fire{threshold,      window.kind,     LimitWindow::title(window.kind, window.scope),
                    window.percent, window.resetsAt, std::move(key)};
    }
};

void append(std::vector<Fire>& fires, std::optional<Fire> fire)
{
    if (fire)
        fires.push_back(*std::move(fire));
}

} // namespace

std::vector<Fire> newlyFired(const std::string& accountId, const Usage& usage,
                             const Usage* previous, const Preferences& preferences,
                             const std::set<std::string>& alreadyFired)
{
    if (previous == nullptr)
        return {};
    const Crossing crossing{accountId, *previous, alreadyFired};
    std::vector<Fire> fires;
    if (const LimitWindow* session = usage.sessionWindow()) {
        for (const Threshold threshold : ofSession) {
            if (isOn(threshold, preferences))
                append(fires, crossing.fire(threshold, *session));
        }
    }
    const auto others = usage.nonSessionWindows();
    for (const Threshold threshold : ofWeek) {
        if (!isOn(threshold, preferences))
            continue;
        for (const LimitWindow& window : others)
            append(fires, crossing.fire(threshold, window));
    }
    return fires;
}

std::set<std::string> subsumedKeys(const std::vector<Fire>& fires)
{
    std::map<std::string, double> highest; // by window kind
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
