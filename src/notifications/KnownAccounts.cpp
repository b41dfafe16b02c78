#include "notifications/KnownAccounts.h"

namespace vellumor {

std::vector<Account> KnownAccounts::reconcile(const std::vector<Account>& accounts)
{
    std::set<std::string> ids;
    std::vector<Account> fresh;
    for (const Account& account : accounts) {
        ids.insert(account.id);
        if (m_isSeeded && !m_ids.contains(account.id))
            fresh.push_back(account);
    }
    m_ids = std::move(ids);
    m_isSeeded = true;
    return fresh;
}

} // namespace vellumor
