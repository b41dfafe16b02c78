#include "cli/TerminalStyle.h"

#include <gtest/gtest.h>

namespace vellumor::terminalStyleTest {
namespace {

TEST(TerminalStyle, coloursAreForATerminalWhoseUserWantsThem)
{
    const struct {
        Environment environment;
        bool isTerminal;
        bool hasColours;
    } rows[] = {
        {{}, true, true},
        {{}, false, false},
        {{{"NO_COLOR", "1"}}, true, false},
        {{{"NO_COLOR", "0"}}, true, false},
        {{{"NO_COLOR", ""}}, true, true}, // as if it were not set
        {{{"TERM", "dumb"}}, true, false},
        {{{"TERM", "xterm-256color"}}, true, true},
        {{{"TERM", "xterm-256color"}}, false, false},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(TerminalStyle::hasColours(row.environment, row.isTerminal), row.hasColours)
            << &row - rows;
    }
}

TEST(TerminalStyle, theTerminalKnowsHowWideItIsElseTheEnvironmentElseItIsTheUsual)
{
    const struct {
        const char* columns;
        int columnsOfTerminal;
        int width;
    } rows[] = {
        {"", 0, 80},  {"", 132, 132}, {"40", 132, 132}, {"40", 0, 40},   {"1000", 0, 1000},
        {"0", 0, 80}, {"-5", 0, 80},  {"1001", 0, 80},  {"wide", 0, 80}, {"99999999999", 0, 80},
    };
    for (const auto& [columns, columnsOfTerminal, width] : rows) {
        EXPECT_EQ(TerminalStyle::width({{"COLUMNS", columns}}, columnsOfTerminal), width)
            << columns << " " << columnsOfTerminal;
    }
    EXPECT_EQ(TerminalStyle::width({}, 0), 80);
}

} // namespace
} // namespace vellumor::terminalStyleTest
