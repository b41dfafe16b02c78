// The names of accounts that a scan has found for the first time.

#include "app/state/AppStateTesting.h"

namespace vellumor {
namespace {

using test::Names;

struct AppStateNewAccountsTest : test::AppStateTesting {
    Names fresh;                   // those that count as new in the next scan
    std::vector<Names> reconciled; // what each scan has shown

    AppStateNewAccountsTest()
    {
        reconcile = [this](const std::vector<Account>& accounts) {
            reconciled.push_back(namesOf(accounts));
            std::vector<Account> those;
            for (const Account& each : accounts) {
                if (std::ranges::find(fresh, each.displayName) != fresh.end())
                    those.push_back(each);
            }
            return those;
        };
    }
};

TEST_F(AppStateNewAccountsTest, eachScanShowsAllItsAccounts)
{
    addAll({"ada", "bob"});
    rescan();
    leaveOnly({"bob"});
    rescan();
    ASSERT_EQ(reconciled.size(), 2U);
    EXPECT_EQ(reconciled[0], (Names{"ada", "bob"}));
    EXPECT_EQ(reconciled[1], namesOf(state.accounts()));
}

TEST_F(AppStateNewAccountsTest, namesGatherOnceEachInTheOrderOfTheirFinding)
{
    addAll({"ada", "bob", "cleo"});
    fresh = {"bob"};
    rescan();
    EXPECT_EQ(state.newAccountNames(), Names{"bob"});
    fresh = {"ada", "bob", "cleo"};
    rescan();
    EXPECT_EQ(state.newAccountNames(), (Names{"bob", "ada", "cleo"}));
}

TEST_F(AppStateNewAccountsTest, aScanThatFailsFindsNone)
{
    add("ada");
    fresh = {"ada"};
    found.scanFailed = true;
    rescan();
    EXPECT_TRUE(reconciled.empty());
    EXPECT_EQ(state.newAccountNames(), Names());
}

TEST_F(AppStateNewAccountsTest, dismissingEmptiesThemAndIsTold)
{
    add("ada");
    fresh = {"ada"};
    rescan();
    settle();
    int changes = 0;
    state.observe([&] { ++changes; });
    state.dismissNewAccounts();
    EXPECT_EQ(state.newAccountNames(), Names());
    EXPECT_EQ(changes, 0); // in the next turn
    settle();
    EXPECT_EQ(changes, 1);
    fresh = {};
    rescan();
    EXPECT_EQ(state.newAccountNames(), Names());
}

TEST_F(AppStateNewAccountsTest, theyAreThereWhenTheScanIsTold)
{
    settle();
    std::vector<Names> told;
    state.observe([&] { told.push_back(state.newAccountNames()); });
    add("ada");
    fresh = {"ada"};
    rescan();
    settle();
    ASSERT_FALSE(told.empty());
    EXPECT_EQ(told.front(), Names{"ada"});
}

} // namespace
} // namespace vellumor
