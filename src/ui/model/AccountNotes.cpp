#include "ui/model/AccountNotes.h"

#include "base/PlatformWords.h"

#include <fmt/format.h>

namespace vellumor {

namespace {

using Kind = UsageFetchError::Kind;

constexpr const char* blockedText = "Blocked while updating usage numbers (HTTP 403)";

bool failedWith(const AccountUsageState& state, Kind kind)
{
    return state.lastError && state.lastError->kind == kind;
}

} // namespace

std::string RevivalNote::text(RevivalStatus revival)
{
    switch (revival) {
    case RevivalStatus::reviving:
        return "Refreshing your sign-in…";
    case RevivalStatus::succeeded:
        return "Sign-in refreshed";
    case RevivalStatus::disabled:
        return "Sign-in expired — sign in to this account in Claude Code";
    case RevivalStatus::retrying:
        return "Couldn’t refresh your sign-in — will retry";
    case RevivalStatus::needsSignIn:
        return "Sign in to this account in Claude Code";
    case RevivalStatus::unavailable:
        return PlatformWords::couldNotFindClaude;
    }
    return {};
}

std::optional<std::string> StatusNote::text(const AccountUsageState& state, bool isStale)
{
    if (!state.usage || state.revival)
        return std::nullopt;
    if (failedWith(state, Kind::forbidden))
        return blockedText;
    if (failedWith(state, Kind::rateLimited))
        return "Rate limited — showing last update";
    if (state.isOffline)
        return "Offline — showing last update";
    if (state.didFailRefresh())
        return "Couldn’t refresh — showing last update";
    if (isStale)
        return "Showing last update";
    return std::nullopt;
}

std::optional<std::string> StatusNote::reason(const AccountUsageState& state)
{
    if (state.usage || !state.lastError)
        return std::nullopt;
    if (state.isNoToken())
        return "Sign in to this account in Claude Code";
    if (failedWith(state, Kind::forbidden))
        return blockedText;
    if (failedWith(state, Kind::rateLimited))
        return "Rate limited — waiting before the next refresh";
    return couldNotUpdate(*state.lastError);
}

std::string StatusNote::couldNotUpdate(const UsageFetchError& error)
{
    if (error.kind == Kind::http)
        return fmt::format("Couldn’t update usage numbers (HTTP {})", error.status);
    return "Couldn’t update usage numbers";
}

} // namespace vellumor
