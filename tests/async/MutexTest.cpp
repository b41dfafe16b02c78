#include "async/Mutex.h"

#include "async/Sleep.h"
#include "async/Task.h"
#include "support/FakeClock.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vellumor::mutexTest {
namespace {

using namespace std::chrono_literals;
using test::FakeClock;
using Notes = std::vector<std::string>;

struct MutexTest : testing::Test {
    FakeClock clock;
    Mutex mutex;
    Notes notes;

    // Whoever is still at work comes to an end.
    void TearDown() override { clock.advance(1h); }

    // Takes a turn of `length`, noting its begin and its end.
    Task<> work(std::string name, std::chrono::milliseconds length)
    {
        const auto turn = co_await mutex.lock();
        notes.push_back(name + " begins");
        co_await Sleep(clock, length);
        notes.push_back(name + " ends");
    }
    // A second turn after the first, in the same coroutine.
    Task<> workTwice(std::string name)
    {
        {
            const auto turn = co_await mutex.lock();
            co_await Sleep(clock, 1s);
            notes.push_back(name + " once");
        }
        const auto turn = co_await mutex.lock();
        notes.push_back(name + " twice");
    }
    Task<> handOnItsTurn()
    {
        auto turn = co_await mutex.lock();
        {
            const auto moved = std::move(turn);
            co_await Sleep(clock, 1s);
        }
        notes.emplace_back("moved turn is over");
        co_await Sleep(clock, 2s);
    }
};

TEST_F(MutexTest, aFreeOneIsTakenWithoutWaiting)
{
    const auto task = work("a", 1s);
    EXPECT_EQ(notes, Notes{"a begins"});
}

TEST_F(MutexTest, nobodyComesInDuringATurn)
{
    const auto first = work("a", 1s);
    const auto second = work("b", 1s);
    clock.advance(999ms);
    EXPECT_EQ(notes, Notes{"a begins"});
    clock.advance(1ms);
    EXPECT_EQ(notes, (Notes{"a begins", "a ends", "b begins"}));
    clock.advance(1s);
    EXPECT_TRUE(first.isReady());
    EXPECT_TRUE(second.isReady());
}

TEST_F(MutexTest, thoseWhoWaitComeInTheOrderOfTheirComing)
{
    std::vector<Task<>> tasks;
    Notes expected;
    for (int i = 0; i < 100; ++i) {
        const std::string name = std::to_string(i);
        tasks.push_back(work(name, 10ms));
        expected.push_back(name + " begins");
        expected.push_back(name + " ends");
    }
    clock.advance(1s);
    EXPECT_EQ(notes, expected);
}

TEST_F(MutexTest, whoComesAgainStandsBehindThoseWhoWait)
{
    const auto twice = workTwice("a");
    const auto other = work("b", 1s);
    clock.advance(10s);
    EXPECT_EQ(notes, (Notes{"a once", "b begins", "b ends", "a twice"}));
}

TEST_F(MutexTest, isFreeAgainAfterTheLastTurn)
{
    const auto first = work("a", 1s);
    const auto second = work("b", 1s);
    clock.advance(2s);
    notes.clear();
    const auto third = work("c", 1s);
    EXPECT_EQ(notes, Notes{"c begins"});
}

TEST_F(MutexTest, aTurnThatWasMovedEndsOnce)
{
    const auto first = handOnItsTurn();
    const auto second = work("b", 5s);
    const auto third = work("c", 1s);
    clock.advance(1s);
    EXPECT_EQ(notes, (Notes{"b begins", "moved turn is over"}));
    clock.advance(3s); // the end of the one that was moved from
    EXPECT_TRUE(first.isReady());
    EXPECT_EQ(notes.size(), 2U);
}

} // namespace
} // namespace vellumor::mutexTest
