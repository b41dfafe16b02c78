#pragma once

#include "accounts/Account.h"
#include "app/state/AccountUsageState.h"

#include <optional>
#include <string>
#include <vector>

namespace vellumor {

enum class AccountRenderState { ok, stale, loading, noData, noToken, expired, blocked };

// What the panel shows of one account.
struct AccountRender {
    std::string name; // as the user calls it
    AccountRenderState state = AccountRenderState::loading;
    double sessionPercent = 0; // 0 without a session window
    std::optional<double> worstNonSessionPercent;
    std::vector<double> nonSessionPercents;
    std::optional<std::string> worstNonSessionTitle; // "Weekly (Opus)"

    bool operator==(const AccountRender&) const = default;

    // Pure. `state` may be a null pointer: nothing is known yet.
    [[nodiscard]] static AccountRender of(const Account& account, const AccountUsageState* state,
                                          double effectiveInterval, Instant now);
};

} // namespace vellumor
