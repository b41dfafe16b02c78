#include "status/RefreshGate.h"

#include "status/StatusTesting.h"

#include <gtest/gtest.h>

namespace vellumor::refreshGateTest {
namespace {

using std::chrono::milliseconds;
using test::reportedAt;

TEST(RefreshGate, withinTwentySecondsOfTheLastOneItIsShut)
{
    RefreshGate gate;
    EXPECT_TRUE(gate.admit(reportedAt));
    EXPECT_FALSE(gate.admit(reportedAt));
    EXPECT_FALSE(gate.admit(reportedAt + milliseconds(19999)));
    EXPECT_TRUE(gate.admit(reportedAt + milliseconds(20000)));
    EXPECT_FALSE(gate.admit(reportedAt + milliseconds(39999)));
}

TEST(RefreshGate, whoIsRefusedDoesNotKeepItShut)
{
    RefreshGate gate;
    EXPECT_TRUE(gate.admit(reportedAt));
    for (int second = 1; second < 20; ++second)
        EXPECT_FALSE(gate.admit(reportedAt + std::chrono::seconds(second)));
    EXPECT_TRUE(gate.admit(reportedAt + std::chrono::seconds(20)));
}

TEST(RefreshGate, aClockThatWasSetBackOpensIt)
{
    RefreshGate gate;
    EXPECT_TRUE(gate.admit(reportedAt));
    EXPECT_TRUE(gate.admit(reportedAt - std::chrono::hours(3)));
    EXPECT_FALSE(gate.admit(reportedAt - std::chrono::hours(3)));
}

} // namespace
} // namespace vellumor::refreshGateTest
