#include "async/Sleep.h"

#include "async/Task.h"
#include "support/FakeClock.h"

#include <gtest/gtest.h>

#include <vector>

namespace vellumor::sleepTest {
namespace {

using namespace std::chrono_literals;
using test::FakeClock;

Task<> noteAfter(Clock& clock, std::chrono::milliseconds delay, std::vector<int>& notes, int note)
{
    co_await Sleep(clock, delay);
    notes.push_back(note);
}

TEST(Sleep, endsWhenTheClockHasReachedItsMomentAndNotBefore)
{
    FakeClock clock;
    std::vector<int> notes;
    const auto task = noteAfter(clock, 2000ms, notes, 1);
    clock.advance(1999ms);
    EXPECT_TRUE(notes.empty());
    clock.advance(1ms);
    EXPECT_EQ(notes, std::vector<int>{1});
}

TEST(Sleep, severalEndInTheOrderOfTheirMoments)
{
    FakeClock clock;
    std::vector<int> notes;
    const auto late = noteAfter(clock, 4000ms, notes, 3);
    const auto early = noteAfter(clock, 1000ms, notes, 1);
    const auto middle = noteAfter(clock, 2000ms, notes, 2);
    clock.advance(5000ms);
    EXPECT_EQ(notes, (std::vector<int>{1, 2, 3}));
}

TEST(Sleep, ofNoTimeDoesNotWait)
{
    FakeClock clock;
    std::vector<int> notes;
    const auto task = noteAfter(clock, 0ms, notes, 1);
    EXPECT_EQ(notes, std::vector<int>{1});
    EXPECT_EQ(clock.pendingAlarms(), 0U);
}

} // namespace
} // namespace vellumor::sleepTest
