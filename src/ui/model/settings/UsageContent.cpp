#include "ui/model/settings/UsageContent.h"

#include "app/state/AccountList.h"
#include "base/IntervalDisplay.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace vellumor {

namespace {

constexpr double secondsPerMinute = 60.0;

} // namespace

std::string UsageContent::spelledInterval(double seconds)
{
    const auto rounded = static_cast<long long>(std::llround(seconds));
    if (rounded == 60)
        return "~1 minute";
    if (rounded > 60 && rounded % 60 == 0)
        return fmt::format("~{} minutes", rounded / 60);
    return "~" + IntervalDisplay::shortText(seconds);
}

std::string UsageContent::effective(std::size_t pollable, std::size_t tracked,
                                    double effectiveInterval)
{
    if (pollable == 0)
        return "No accounts are currently refreshing — none has a readable sign-in.";
    const char* const word = pollable == tracked ? "tracked" : "active";
    const std::string interval = spelledInterval(effectiveInterval);
    if (pollable == 1)
        return fmt::format("Usage of your {} account refreshes every {}.", word, interval);
    return fmt::format("Usage of each of your {} {} accounts refreshes every {}.", pollable, word,
                       interval);
}

UsageContent UsageContent::of(const AppState& state)
{
    const Preferences& preferences = state.preferences();
    UsageContent content;
    std::vector<double> seconds(intervalPresets.begin(), intervalPresets.end());
    const double stored = state.userInterval();
    if (std::find(seconds.begin(), seconds.end(), stored) == seconds.end())
        seconds.insert(std::lower_bound(seconds.begin(), seconds.end(), stored), stored);
    for (const double choice : seconds)
        content.intervals.push_back({choice, spelledInterval(choice)});
    content.interval = static_cast<std::size_t>(
        std::distance(seconds.begin(), std::find(seconds.begin(), seconds.end(), stored)));
    content.designedNote = fmt::format("Designed for up to ~{:.0f} accounts. If you add more, the "
                                       "refreshes will spread further apart.",
                                       std::floor(stored / secondsPerMinute));
    content.effectiveNote =
        effective(state.pollableAccounts(state.now()).size(),
                  AccountList::orderedTracked(state.accounts()).size(), state.effectiveInterval());
    content.localCacheOnly = preferences.localCacheOnly;
    content.tokenRevivalEnabled = preferences.tokenRevivalEnabled;
    content.hasClaudePath = !preferences.claudeBinaryPath.empty();
    content.claudeLocation = content.hasClaudePath ? preferences.claudeBinaryPath : "automatic";
    return content;
}

} // namespace vellumor
