#include "status/StatusWaybar.h"

#include "base/Json.h"
#include "status/StatusTesting.h"

#include <gtest/gtest.h>

namespace vellumor::statusWaybarTest {
namespace {

using test::reportedAt;

Json read(const StatusReport& report, StatusOrigin origin = StatusOrigin::program)
{
    return parseJson(StatusWaybar::line(report, origin, reportedAt)).value_or(Json());
}

TEST(StatusWaybar, theLineHasTextTooltipClassAndPercentage)
{
    const Json expected = {{"text", "Work 91%  Home –"},
                           {"tooltip", "Work · 2m ago\n"
                                       "Session: 62% · 2h 14m\n"
                                       "Weekly: 91% · 3d 2h\n"
                                       "↗ Weekly on pace to hit the limit ~15:05\n"
                                       "Usage credits · €12.50 of €50.00\n"
                                       "Offline — showing last update\n"
                                       "\n"
                                       "Home"},
                           {"class", {"full", "noData"}},
                           {"percentage", 91}};
    EXPECT_EQ(read(test::statusReport()), expected);
    EXPECT_EQ(
        StatusWaybar::line(test::statusReport(), StatusOrigin::program, reportedAt).find('\n'),
        std::string::npos);
}

TEST(StatusWaybar, whatItComesFromAndWhatIsMissingAreClasses)
{
    EXPECT_EQ(read({}),
              (Json{{"text", ""}, {"tooltip", ""}, {"class", {"none"}}, {"percentage", 0}}));
    EXPECT_EQ(read(test::statusReport(), StatusOrigin::files)["class"],
              (Json{"full", "noData", "files"}));
}

TEST(StatusWaybar, aNameIsNoMarkup)
{
    StatusReport report = test::statusReport();
    report.accounts.resize(1);
    report.accounts[0].name = "<b>&\"'\n</b>";
    EXPECT_EQ(read(report)["text"], "&lt;b&gt;&amp;&quot;&#39;�&lt;/b&gt; 91%");
    EXPECT_TRUE(read(report)["tooltip"].get<std::string>().starts_with(
        "&lt;b&gt;&amp;&quot;&#39;�&lt;/b&gt; · 2m ago\n"));
}

TEST(StatusWaybar, thePercentageStaysWithinAHundred)
{
    StatusReport report = test::statusReport();
    for (const auto& [percent, told] : {std::pair(140.0, 100), {-3.0, 0}, {62.5, 63}}) {
        report.accounts = {
            test::statusAccount("a", {test::statusWindow("session", "Session", percent)})};
        EXPECT_EQ(read(report)["percentage"], told) << percent;
    }
}

} // namespace
} // namespace vellumor::statusWaybarTest
