#pragma once

#include "accounts/Account.h"

#include <vector>

// AccountList: which accounts are shown, and in what order. Pure.
namespace vellumor::AccountList {

// As many fit into the panel.
inline constexpr std::size_t mostPinned = 4;

// The tracked accounts by order; equal orders keep their place.
[[nodiscard]] std::vector<Account> orderedTracked(const std::vector<Account>& accounts);

// Those of them that are drawn in the panel: pinned, and mostPinned of them at most.
[[nodiscard]] std::vector<Account> pinned(const std::vector<Account>& accounts);

// Whether the user may change the pin: an account that is pinned may be unpinned, a tracked one
// pinned while there is room.
[[nodiscard]] bool canPin(const Account& account, const std::vector<Account>& accounts);

} // namespace vellumor::AccountList
