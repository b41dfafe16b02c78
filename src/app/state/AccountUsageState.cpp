#include "app/state/AccountUsageState.h"

#include <algorithm>

namespace vellumor {

namespace {

using Kind = UsageFetchError::Kind;

constexpr double toleratedClockSkew = 60.0; // seconds
constexpr double leastStaleAge = 300.0;     // seconds

// Seconds; a reading is stale when it is older.
double freshAge(double effectiveInterval)
{
    return std::max(3 * effectiveInterval, leastStaleAge);
}

bool waitsForUser(const AccountUsageState& state)
{
    return (state.lastError && state.lastError->kind == Kind::forbidden) || state.isNoToken() ||
           state.revival == RevivalStatus::disabled ||
           state.revival == RevivalStatus::needsSignIn ||
           state.revival == RevivalStatus::unavailable;
}

std::optional<Instant> oldestOf(const std::vector<AccountUsageState>& states)
{
    std::optional<Instant> oldest;
    for (const AccountUsageState& state : states) {
        if (state.usage && (!oldest || state.usage->fetchedAt < *oldest))
            oldest = state.usage->fetchedAt;
    }
    return oldest;
}

} // namespace

bool AccountUsageState::isStale(double effectiveInterval, Instant now) const
{
    if (!usage)
        return false;
    const double age = secondsBetween(usage->fetchedAt, now);
    return age < -toleratedClockSkew || age > freshAge(effectiveInterval);
}

std::optional<Instant> AccountUsageState::nextStaleChange(double effectiveInterval,
                                                          Instant now) const
{
    if (!usage)
        return std::nullopt;
    const double age = secondsBetween(usage->fetchedAt, now);
    const auto after = [&](double seconds) {
        return usage->fetchedAt + std::chrono::duration_cast<Instant::duration>(
                                      std::chrono::duration<double>(seconds));
    };
    if (age < -toleratedClockSkew)
        return after(-toleratedClockSkew);
    if (age > freshAge(effectiveInterval))
        return std::nullopt;
    return after(freshAge(effectiveInterval)) + std::chrono::milliseconds(1);
}

bool AccountUsageState::isNoToken() const
{
    return !usage && lastError &&
           (lastError->kind == Kind::keychain || lastError->kind == Kind::noService);
}

AccountUsageState forgettingSupersededConclusions(AccountUsageState state,
                                                  const std::optional<Instant>& tokenExpiresAt)
{
    if (!state.lastError && !state.revival)
        return state;
    if (state.concludedAbout && state.concludedAbout == tokenExpiresAt)
        return state;
    state.lastError.reset();
    state.revival.reset();
    state.concludedAbout.reset();
    return state;
}

std::optional<Instant> DataAge::oldest(const std::vector<AccountUsageState>& states)
{
    std::vector<AccountUsageState> contributing = states;
    std::erase_if(contributing, waitsForUser);
    return oldestOf(contributing.empty() ? states : contributing);
}

} // namespace vellumor
