#include "status/StatusTable.h"

#include "base/Text.h"
#include "status/StatusTesting.h"

#include <gtest/gtest.h>

#include <sstream>

namespace vellumor::statusTableTest {
namespace {

using test::reportedAt;
using Style = StatusTable::Style;

const Style plain{56, false, StatusBar::Characters::ascii};

std::string text(const StatusReport& report, const Style& style = plain,
                 StatusOrigin origin = StatusOrigin::program)
{
    return StatusTable::text(report, origin, reportedAt, style);
}

TEST(StatusTable, eachAccountHasItsLimitsAsBarsAndAllElseBelow)
{
    EXPECT_EQ(text(test::statusReport()), "Work  2m ago\n"
                                          "  Session  ################---------   62%  2h 14m\n"
                                          "  Weekly   #######################--   91%  3d 2h\n"
                                          "  ↗ Weekly on pace to hit the limit ~15:05\n"
                                          "  Usage credits · €12.50 of €50.00\n"
                                          "  Offline — showing last update\n"
                                          "\n"
                                          "Home\n"
                                          "  No reading yet\n");
}

TEST(StatusTable, coloursComeOnlyWhereTheyAreWanted)
{
    EXPECT_EQ(text(test::statusReport()).find('\033'), std::string::npos);
    Style style = plain;
    style.hasColours = true;
    const auto coloured = text(test::statusReport(), style);
    EXPECT_NE(coloured.find("\033[1mWork\033[0m"), std::string::npos);
    EXPECT_NE(coloured.find("\033[32m###"), std::string::npos);
    EXPECT_NE(coloured.find("\033[31m###"), std::string::npos);
}

TEST(StatusTable, noRowIsWiderThanTheTerminalAndANarrowOneHasNoBars)
{
    StatusReport report = test::statusReport();
    report.accounts[0].windows[0].title = "Weekly (something with a very long name 模型)";
    for (const int width : {34, 40, 56, 80, 200}) {
        std::istringstream lines(text(report, {width, false, StatusBar::Characters::blocks}));
        std::size_t rows = 0;
        for (std::string line; std::getline(lines, line);) {
            if (line.find('%') == std::string::npos)
                continue;
            ++rows;
            EXPECT_LE(Text::columns(line), static_cast<std::size_t>(std::max(width, 52))) << line;
            EXPECT_EQ(line.find("█") != std::string::npos, width > 52) << line;
        }
        EXPECT_EQ(rows, 2U);
    }
}

TEST(StatusTable, aNameCannotWriteToTheTerminal)
{
    StatusReport report = test::statusReport();
    report.accounts[0].name = "a\033]0;b\007\n";
    report.accounts[0].windows[0].title = "\033[2J";
    const auto shown = text(report);
    EXPECT_TRUE(shown.starts_with("a�]0;b��  2m ago\n")) << shown;
    EXPECT_EQ(shown.find('\033'), std::string::npos);
    EXPECT_EQ(shown.find('\007'), std::string::npos);
}

TEST(StatusTable, withoutAccountsOrWithoutTheProgramItSaysSo)
{
    EXPECT_EQ(text({}), "No accounts are watched yet.\n");
    EXPECT_EQ(text({}, plain, StatusOrigin::files),
              "No accounts are watched yet.\n\n"
              "Vellumor does not answer: these are its last readings.\n");
}

TEST(StatusTable, theLineHasEveryAccount)
{
    EXPECT_EQ(StatusTable::line(test::statusReport()),
              "Work: Session 62%, Weekly 91% (Offline — showing last update); Home: noData");
    EXPECT_EQ(StatusTable::line({}), "");
}

} // namespace
} // namespace vellumor::statusTableTest
