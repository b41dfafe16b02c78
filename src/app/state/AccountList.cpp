#include "app/state/AccountList.h"

#include <algorithm>

namespace vellumor::AccountList {

std::vector<Account> ordered(std::vector<Account> accounts)
{
    std::stable_sort(accounts.begin(), accounts.end(),
                     [](const Account& a, const Account& b) { return a.order < b.order; });
    return accounts;
}

std::vector<Account> moved(const std::vector<Account>& accounts,
                           const std::vector<std::size_t>& from, std::size_t to)
{
    std::vector<Account> before;
    std::vector<Account> taken;
    std::vector<Account> after;
    for (std::size_t place = 0; place < accounts.size(); ++place) {
        const bool isTaken = std::find(from.begin(), from.end(), place) != from.end();
        auto& target = isTaken ? taken : place < to ? before : after;
        target.push_back(accounts[place]);
    }
    before.insert(before.end(), taken.begin(), taken.end());
    before.insert(before.end(), after.begin(), after.end());
    return before;
}

std::vector<Account> orderedTracked(const std::vector<Account>& accounts)
{
    auto tracked = ordered(accounts);
    std::erase_if(tracked, [](const Account& account) { return !account.tracked; });
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

std::vector<std::string> ids(const std::vector<Account>& accounts)
{
    std::vector<std::string> ids;
    ids.reserve(accounts.size());
    for (const Account& account : accounts)
        ids.push_back(account.id);
    return ids;
}

std::vector<std::string> configDirs(const std::vector<Account>& accounts)
{
    std::vector<std::string> dirs;
    dirs.reserve(accounts.size());
    for (const Account& account : accounts)
        dirs.push_back(account.configDir);
    return dirs;
}

} // namespace vellumor::AccountList
