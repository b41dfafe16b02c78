#pragma once

#include "accounts/Account.h"

#include <set>
#include <string>
#include <vector>

namespace vellumor {

// Which accounts have been seen since the start, to tell new ones. In memory only.
class KnownAccounts {
public:
    // Those of `accounts` that the call before did not have, in their order. Of the first call none
    // is new; an account that was gone for a call is new again.
    [[nodiscard]] std::vector<Account> reconcile(const std::vector<Account>& accounts);

private:
    std::set<std::string> m_ids;
    bool m_isSeeded = false;
};

} // namespace vellumor
