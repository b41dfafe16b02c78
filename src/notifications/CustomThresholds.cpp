#include "notifications/CustomThresholds.h"

#include "base/Format.h"
#include "notifications/AlertKey.h"

#include <fmt/format.h>

namespace vellumor::CustomThresholds {

namespace {

bool isToldByFixedLevel(const std::string& kind, double threshold, const Preferences& preferences)
{
    const bool isSession = kind == "session";
    const bool at50 = isSession ? preferences.notifySession50 : preferences.notifyWeekly50;
    const bool at90 = isSession ? preferences.notifySession90 : preferences.notifyWeekly90;
    return (threshold == 50.0 && at50) || (threshold == 90.0 && at90);
}

} // namespace

std::vector<CustomFire> customFired(const std::string& accountId,
                                    const std::vector<WindowStep>& steps, double threshold,
                                    const Preferences& preferences,
                                    const std::set<std::string>& alreadyFired,
                                    const std::set<std::string>& limitReached)
{
    std::vector<CustomFire> fires;
    for (const WindowStep& step : steps) {
        const LimitWindow& window = step.window;
        if (!window.resetsAt || limitReached.contains(step.name) ||
            isToldByFixedLevel(window.kind, threshold, preferences))
            continue;
        std::string key = AlertKey::of({accountId, "thr-custom", step.name}, *window.resetsAt);
        if (step.prior < threshold && threshold <= window.percent && !alreadyFired.contains(key)) {
            fires.push_back({step.name, LimitWindow::title(window.kind, window.scope), threshold,
                             window.percent, std::move(key)});
        }
    }
    return fires;
}

std::string body(const CustomFire& fire, const std::string& accountName)
{
    return fmt::format("{} · {} usage crossed {:g}% (now {}%)", accountName, fire.windowTitle,
                       fire.threshold, Format::wholeText(fire.value));
}

} // namespace vellumor::CustomThresholds
