#include "status/StatusReport.h"

#include "status/StatusTesting.h"

#include <gtest/gtest.h>

namespace vellumor::statusReportTest {
namespace {

TEST(StatusReport, theFullestLimitIsTheFirstOfEqualOnes)
{
    EXPECT_EQ(test::statusAccount("a", {}).fullest(), nullptr);
    const auto account = test::statusAccount("a", {test::statusWindow("session", "Session", 40),
                                                   test::statusWindow("b", "B", 62),
                                                   test::statusWindow("c", "C", 62)});
    ASSERT_NE(account.fullest(), nullptr);
    EXPECT_EQ(account.fullest()->title, "B");
    EXPECT_EQ(account.window("c")->title, "C");
    EXPECT_EQ(account.window("d"), nullptr);
}

TEST(StatusReport, aCountdownThatGoesOnIsNoChange)
{
    const auto before = test::statusReport();
    auto after = before;
    after.accounts[0].windows[0].resetText = "2h 13m";
    EXPECT_NE(after, before);
    EXPECT_EQ(after.timeless(), before.timeless());
    after.accounts[0].windows[0].resetText.clear(); // one that is no longer known, is
    EXPECT_NE(after.timeless(), before.timeless());
    after = before;
    after.accounts[0].windows[0].percent += 1;
    EXPECT_NE(after.timeless(), before.timeless());
}

TEST(StatusReport, anAccountIsFoundByItsNameOrItsId)
{
    const auto report = test::statusReport();
    for (const char* word : {"Home", "Home-id"}) {
        ASSERT_EQ(report.only(word).accounts.size(), 1U);
        EXPECT_EQ(report.only(word).accounts[0].name, "Home");
    }
    for (const char* word : {"", "home", "Hom"})
        EXPECT_TRUE(report.only(word).accounts.empty()) << word;
}

} // namespace
} // namespace vellumor::statusReportTest
