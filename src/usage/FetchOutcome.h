#pragma once

#include "usage/UsageFetchError.h"
#include "usage/model/Usage.h"

#include <optional>
#include <string_view>

namespace vellumor {

// Where a reading came from.
enum class UsageSource {
    endpoint,
    cli, // the endpoint, right after Claude Code has renewed the token
    sharedCache,
    vscodeCache,
    snapshot,
};

// The word for it in telemetry and reports: "endpoint", "cli", "sharedCache", ...
[[nodiscard]] std::string_view name(UsageSource source);

// What came of renewing an expired token.
enum class RevivalStatus {
    reviving, // under way: the interface's own state, and no outcome of a fetch
    succeeded,
    disabled, // by the user
    retrying, // not this time
    needsSignIn,
    unavailable, // there is no `claude` program
};

// What one fetch has found out.
struct FetchOutcome {
    std::optional<Usage> usage; // the best reading known; may be older than the fetch
    std::optional<UsageSource> source;
    std::optional<UsageFetchError> error; // why no fresh reading came
    bool isOffline = false;
    std::optional<Instant> backoffUntil; // no call is made before
    std::optional<RevivalStatus> revival;

    bool operator==(const FetchOutcome&) const = default;
};

} // namespace vellumor
