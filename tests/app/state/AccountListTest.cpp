#include "app/state/AccountList.h"

#include <gtest/gtest.h>

namespace vellumor::accountListTest {
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

TEST(AccountList, allOfThemStandByOrderAndEqualOnesKeepTheirPlace)
{
    EXPECT_EQ(idsOf(AccountList::ordered({account("a", 2), account("b", 1), account("c", 1, false),
                                          account("d", 1), account("e", -3)})),
              "ebcda");
    EXPECT_EQ(idsOf(AccountList::ordered({})), "");
}

TEST(AccountList, someAreMovedInFrontOfAnother)
{
    const std::vector<Account> five = {account("a", 0), account("b", 1), account("c", 2),
                                       account("d", 3), account("e", 4)};
    const struct {
        std::vector<std::size_t> from;
        std::size_t to;
        const char* then;
    } rows[] = {
        {{0}, 3, "bcade"},    // forwards
        {{3}, 1, "adbce"},    // backwards
        {{0}, 5, "bcdea"},    // to the end
        {{4}, 0, "eabcd"},    // to the front
        {{2}, 2, "abcde"},    // where it stands
        {{2}, 3, "abcde"},    // in front of the next
        {{0, 2}, 5, "bdeac"}, // several at once
        {{2, 0}, 5, "bdeac"}, // in their own order, however they are given
        {{1, 3}, 2, "abdce"}, // one from each side
        {{3, 4}, 1, "adebc"}, //
        {{1, 1}, 4, "acdbe"}, // twice is once
        {{0}, 99, "bcdea"},   // beyond the end
        {{7}, 0, "abcde"},    // nobody
        {{0, 7}, 2, "bacde"}, // somebody and nobody
        {{}, 3, "abcde"},     //
        {{0, 1, 2, 3, 4}, 2, "abcde"},
    };
    for (const auto& [from, to, then] : rows) {
        SCOPED_TRACE(testing::PrintToString(from) + " to " + std::to_string(to));
        EXPECT_EQ(idsOf(AccountList::moved(five, from, to)), then);
    }
    EXPECT_EQ(idsOf(AccountList::moved({}, {0}, 0)), "");
}

TEST(AccountList, theIdsAndTheDirectoriesStandInTheOrderOfTheAccounts)
{
    std::vector<Account> two = {account("b", 2), account("a", 1)};
    two[0].configDir = "/b";
    two[1].configDir = "/a";
    EXPECT_EQ(AccountList::ids(two), (std::vector<std::string>{"b", "a"}));
    EXPECT_EQ(AccountList::configDirs(two), (std::vector<std::string>{"/b", "/a"}));
}

} // namespace
} // namespace vellumor::accountListTest
