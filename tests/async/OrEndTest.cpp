#include "async/OrEnd.h"

#include "async/Sleep.h"
#include "support/FakeClock.h"

#include <gtest/gtest.h>

#include <csignal>
#include <new>

namespace vellumor::orEndTest {
namespace {

Task<> wait(Clock& clock, bool fails)
{
    co_await Sleep(clock, std::chrono::seconds(1));
    if (fails)
        throw std::bad_alloc();
}

TEST(OrEnd, aTaskThatEndsWellEnds)
{
    test::FakeClock clock;
    const Task<> task = orEnd(wait(clock, false));
    EXPECT_FALSE(task.isReady());
    clock.advance(std::chrono::seconds(1));
    EXPECT_TRUE(task.isReady());
}

TEST(OrEndDeathTest, aFailureThatNobodyWouldSeeEndsTheProgram)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto fail = [] {
        test::FakeClock clock;
        const Task<> task = orEnd(wait(clock, true));
        clock.advance(std::chrono::seconds(1));
    };
    EXPECT_EXIT(fail(), testing::KilledBySignal(SIGABRT), "bad_alloc");
}

} // namespace
} // namespace vellumor::orEndTest
