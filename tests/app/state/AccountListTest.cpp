#include "app/state/AccountList.h"

#include <gtest/gtest.h>

namespace vellumor {
namespace {

Account account(const std::string& id, int order, bool tracked = true, bool pinned = true)
{
    Account account;
    account.id = id;
    account.order = order;
    account.tracked = tracked;
    account.pinned = pinned;
    return account;
}

std::string idsOf(const std::vector<Account>& accounts)
{
    std::string ids;
    for (const Account& each : accounts)
        ids += each.id;
    return ids;
}

TEST(AccountList, trackedAccountsStandByOrderAndEqualOnesKeepTheirPlace)
{
    EXPECT_EQ(
        idsOf(AccountList::orderedTracked({account("a", 2), account("b", 1), account("c", 1, false),
                                           account("d", 1), account("e", -3)})),
        "ebda");
}

TEST(AccountList, fourArePinnedAtMost)
{
    const std::vector<Account> five = {account("e", 5), account("a", 1), account("b", 2),
                                       account("c", 3), account("d", 4)};
    EXPECT_EQ(idsOf(AccountList::pinned(five)), "abcd");
    EXPECT_EQ(idsOf(AccountList::pinned({account("a", 1, true, false), account("b", 2)})), "b");
    EXPECT_EQ(idsOf(AccountList::pinned({account("a", 1, false)})), "");
}

TEST(AccountList, aPinIsTakenAwayAtAnyTimeAndGivenWhileThereIsRoom)
{
    const Account free = account("x", 9, true, false);
    std::vector<Account> accounts = {account("a", 1), account("b", 2), account("c", 3),
                                     account("d", 4, false), free};
    EXPECT_TRUE(AccountList::canPin(free, accounts)); // the untracked one takes no room
    EXPECT_TRUE(AccountList::canPin(accounts[3], accounts));
    EXPECT_FALSE(AccountList::canPin(account("y", 9, false, false), accounts));
    accounts.push_back(account("e", 5));
    EXPECT_FALSE(AccountList::canPin(free, accounts));
    EXPECT_TRUE(AccountList::canPin(accounts[0], accounts));
}

} // namespace
} // namespace vellumor
