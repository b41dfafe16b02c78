#pragma once

#include "accounts/Account.h"
#include "app/state/AccountUsageState.h"
#include "support/FakeClock.h"

#include <string>
#include <utility>
#include <vector>

namespace vellumor::test {

// A Sunday, at half past five in the afternoon in India.
inline const Instant noon = instant("2026-03-29T12:00:00Z");

inline Account account(const std::string& name, TokenStatus token = TokenStatus::readable)
{
    Account account;
    account.id = name + "-id";
    account.displayName = name;
    account.configDir = "/home/" + name + "/.claude";
    account.tokenStatus = token;
    return account;
}

inline LimitWindow window(const std::string& kind, double percent,
                          std::optional<Instant> resetsAt = std::nullopt)
{
    LimitWindow window;
    window.kind = kind;
    window.group = kind == "session" ? "session" : "weekly";
    window.percent = percent;
    window.resetsAt = resetsAt;
    window.isActive = resetsAt.has_value();
    return window;
}

inline AccountUsageState read(std::vector<LimitWindow> windows, Instant at = noon)
{
    AccountUsageState state;
    state.usage.emplace();
    state.usage->windows = std::move(windows);
    state.usage->fetchedAt = at;
    return state;
}

inline UsageFetchError error(UsageFetchError::Kind kind, int status = 0)
{
    UsageFetchError error;
    error.kind = kind;
    error.status = status;
    return error;
}

inline AccountUsageState failed(UsageFetchError::Kind kind, int status = 0)
{
    AccountUsageState state;
    state.lastError = error(kind, status);
    return state;
}

} // namespace vellumor::test
