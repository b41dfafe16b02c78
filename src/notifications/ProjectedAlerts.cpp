#include "notifications/ProjectedAlerts.h"

#include "notifications/AlertKey.h"

#include <algorithm>

namespace vellumor {

namespace {

constexpr double sessionShortfall = 1800.0; // seconds without the limit that are worth a word
constexpr double weeklyShortfall = 18000.0;
constexpr double cooldown = 5400.0; // seconds between two warnings for one account
constexpr int leastCount = 2;

bool isSession(const std::string& kind)
{
    return kind == "session";
}

using FirstWindows = std::map<std::string_view, const LimitWindow*>; // of each kind

FirstWindows firstWindows(const std::vector<LimitWindow>& windows)
{
    FirstWindows first;
    for (const LimitWindow& window : windows)
        first.emplace(window.kind, &window);
    return first;
}

bool isEligible(const EtaHold& hold, Instant resetsAt, Instant wall)
{
    if (hold.count < leastCount)
        return false;
    const double least = isSession(hold.windowKind) ? sessionShortfall : weeklyShortfall;
    return secondsBetween(wall, resetsAt) >= least;
}

// Takes one candidate into the outcome; gives it when it is to be told.
std::optional<ProjectedFire> advance(const Projection::Candidate& candidate,
                                     const ProjectedInput& input, const FirstWindows& windows,
                                     EtaHolds& holds)
{
    const auto found = windows.find(candidate.kind);
    if (!candidate.wall || found == windows.end() || !found->second->resetsAt)
        return std::nullopt;
    const Instant resetsAt = *found->second->resetsAt;
    EtaHold hold{candidate.kind,
                 AlertKey::of({input.accountId, "projlimit", candidate.kind}, resetsAt), 1, false};
    const auto prior = input.previous.find(candidate.kind);
    const bool goesOn = prior != input.previous.end() && prior->second.key == hold.key;
    if (goesOn)
        hold.count = prior->second.count + 1;
    const bool wasEligible = goesOn && prior->second.wasEligible;
    const bool eligible = isEligible(hold, resetsAt, *candidate.wall);
    hold.wasEligible = eligible || wasEligible;
    const bool isReady = eligible && !wasEligible &&
                         (isSession(candidate.kind) ? input.deliverSession : input.deliverWeekly) &&
                         !input.alreadyFired.contains(hold.key);
    ProjectedFire fire{candidate.kind, candidate.title, *candidate.wall, hold.key};
    holds.insert_or_assign(candidate.kind, std::move(hold));
    return isReady ? std::optional(std::move(fire)) : std::nullopt;
}

} // namespace

ProjectedOutcome advanceProjected(const ProjectedInput& input)
{
    ProjectedOutcome outcome;
    const FirstWindows windows = firstWindows(input.windows);
    std::vector<ProjectedFire> ready;
    for (const Projection::Candidate& candidate : input.candidates) {
        if (auto fire = advance(candidate, input, windows, outcome.holds))
            ready.push_back(*std::move(fire));
    }
    if (ready.empty())
        return outcome;
    std::ranges::stable_sort(ready, {}, &ProjectedFire::wall);
    for (const ProjectedFire& fire : ready)
        outcome.consumedKeys.push_back(fire.key);
    if (input.lastFired && secondsBetween(*input.lastFired, input.now) < cooldown)
        return outcome;
    outcome.fire = ready.front();
    outcome.firedAt = input.now;
    return outcome;
}

} // namespace vellumor
