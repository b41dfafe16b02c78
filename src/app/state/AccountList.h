#pragma once

#include "accounts/Account.h"

#include <cstddef>
#include <string>
#include <vector>

// AccountList: which accounts are shown, and in what order. Pure.
namespace vellumor::AccountList {

// As many fit into the panel.
inline constexpr std::size_t mostPinned = 4;

// All accounts by order, tracked or not; equal orders keep their place.
[[nodiscard]] std::vector<Account> ordered(std::vector<Account> accounts);

// `accounts` with those at the places `from` taken out and put, in their order, in front of the one
// that stood at `to`; at the end when `to` is beyond it. Places beyond the end are left out.
[[nodiscard]] std::vector<Account> moved(const std::vector<Account>& accounts,
                                         const std::vector<std::size_t>& from, std::size_t to);

// The tracked accounts by order; equal orders keep their place.
[[nodiscard]] std::vector<Account> orderedTracked(const std::vector<Account>& accounts);

// Those of them that are drawn in the panel: pinned, and mostPinned of them at most.
[[nodiscard]] std::vector<Account> pinned(const std::vector<Account>& accounts);

// Whether the user may change the pin: an account that is pinned may be unpinned, a tracked one
// pinned while there is room.
[[nodiscard]] bool canPin(const Account& account, const std::vector<Account>& accounts);

[[nodiscard]] std::vector<std::string> ids(const std::vector<Account>& accounts);
[[nodiscard]] std::vector<std::string> configDirs(const std::vector<Account>& accounts);

} // namespace vellumor::AccountList
