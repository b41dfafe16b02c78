// The names of accounts that a scan has found for the first time.

#include "app/state/AppStateTesting.h"

namespace vellumor::appStateNewAccountsTest {
namespace {

using test::Names;

struct AppStateNewAccountsTest : test::AppStateTesting {};

TEST_F(AppStateNewAccountsTest, theAccountsOfTheFirstScanAreNotNew)
{
    addAll({"ada", "bob"});
    rescan();
    EXPECT_EQ(state.newAccountNames(), Names());
}

TEST_F(AppStateNewAccountsTest, namesGatherOnceEachInTheOrderOfTheirFinding)
{
    add("bob");
    rescan();
    addAll({"ada", "cleo"});
    rescan();
    EXPECT_EQ(state.newAccountNames(), (Names{"ada", "cleo"}));
    leaveOnly({"ada"});
    rescan();
    addAll({"bob", "cleo"}); // which count as new again
    rescan();
    EXPECT_EQ(state.newAccountNames(), (Names{"ada", "cleo", "bob"}));
}

TEST_F(AppStateNewAccountsTest, aScanThatFailsFindsNoneAndDoesNotSeed)
{
    add("ada");
    found.scanFailed = true;
    rescan();
    found.scanFailed = false;
    rescan();
    EXPECT_EQ(state.newAccountNames(), Names());
}

TEST_F(AppStateNewAccountsTest, dismissingEmptiesThemAndIsTold)
{
    rescan();
    add("ada");
    rescan();
    settle();
    int changes = 0;
    state.observe([&] { ++changes; });
    state.dismissNewAccounts();
    EXPECT_EQ(state.newAccountNames(), Names());
    EXPECT_EQ(changes, 0); // in the next turn
    settle();
    EXPECT_EQ(changes, 1);
    rescan();
    EXPECT_EQ(state.newAccountNames(), Names());
}

TEST_F(AppStateNewAccountsTest, theyAreThereWhenTheScanIsTold)
{
    rescan();
    settle();
    std::vector<Names> told;
    state.observe([&] { told.push_back(state.newAccountNames()); });
    add("ada");
    rescan();
    settle();
    ASSERT_FALSE(told.empty());
    EXPECT_EQ(told.front(), Names{"ada"});
}

TEST_F(AppStateNewAccountsTest, eachIsToldOfByANotificationOfItsOwnWhereTheyAreOn)
{
    rescan();
    add("ada");
    rescan();
    EXPECT_EQ(delivered, Names());
    state.updatePreferences([](Preferences& all) { all.notificationsEnabled = true; });
    addAll({"bob", "cleo"});
    rescan();
    EXPECT_EQ(delivered, (Names{"New account discovered · bob", "New account discovered · cleo"}));
}

} // namespace
} // namespace vellumor::appStateNewAccountsTest
