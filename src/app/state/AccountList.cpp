#include "app/state/AccountList.h"

#include <algorithm>
#include <iterator>

namespace vellumor::AccountList {

std::vector<Account> orderedTracked(const std::vector<Account>& accounts)
{
    std::vector<Account> tracked;
    std::copy_if(accounts.begin(), accounts.end(), std::back_inserter(tracked),
                 [](const Account& account) { return account.tracked; });
    std::stable_sort(tracked.begin(), tracked.end(),
                     [](const Account& a, const Account& b) { return a.order < b.order; });
    return tracked;
}

std::vector<Account> pinned(const std::vector<Account>& accounts)
{
    auto shown = orderedTracked(accounts);
    std::erase_if(shown, [](const Account& account) { return !account.pinned; });
    if (shown.size() > mostPinned)
        shown.resize(mostPinned);
    return shown;
}

bool canPin(const Account& account, const std::vector<Account>& accounts)
{
    if (account.pinned)
        return true;
    const auto count = std::count_if(accounts.begin(), accounts.end(), [](const Account& other) {
        return other.tracked && other.pinned;
    });
    return account.tracked && static_cast<std::size_t>(count) < mostPinned;
}

} // namespace vellumor::AccountList
