#pragma once

#include "usage/FetchOutcome.h"

#include <optional>
#include <vector>

namespace vellumor {

// What is known about one account's limits, live.
struct AccountUsageState {
    std::optional<Usage> usage; // the last reading shown
    bool isLoading = false;     // a fetch is under way
    std::optional<UsageFetchError> lastError;
    std::optional<UsageSource> source; // of usage
    bool isOffline = false;            // the last outcome came about offline
    std::optional<Instant> backoffUntil;
    std::optional<RevivalStatus> revival;
    std::optional<Instant> blockedUntil;   // after a 403
    std::optional<Instant> concludedAbout; // the token's end that lastError and revival are about

    bool operator==(const AccountUsageState&) const = default;

    // A reading that is too old, or from the future, as after a change of the clock. False without
    // one.
    [[nodiscard]] bool isStale(double effectiveInterval, Instant now) const;
    // The first moment at which isStale turns, if nothing else changes; nothing when it will not.
    [[nodiscard]] std::optional<Instant> nextStaleChange(double effectiveInterval,
                                                         Instant now) const;
    // The last fetch failed, and an older reading is shown.
    [[nodiscard]] bool didFailRefresh() const { return lastError && usage; }
    // There is no reading because there is no credential to fetch one with.
    [[nodiscard]] bool isNoToken() const;
    [[nodiscard]] bool isBlocked(Instant now) const { return blockedUntil && *blockedUntil > now; }
};

// A conclusion holds for the token that it was drawn about: when the token's end has changed, the
// error and the revival are forgotten, and all else stays.
[[nodiscard]] AccountUsageState
forgettingSupersededConclusions(AccountUsageState state,
                                const std::optional<Instant>& tokenExpiresAt);

// The age of what is shown: the oldest reading of the accounts that do not wait for the user, or of
// all when each of them does. Nothing when none has a reading.
namespace DataAge {
[[nodiscard]] std::optional<Instant> oldest(const std::vector<AccountUsageState>& states);
}

} // namespace vellumor
