#include "async/LiveClock.h"

#include <QCoreApplication>
#include <QDeadlineTimer>

#include <gtest/gtest.h>

#include <vector>

namespace vellumor::liveClockTest {
namespace {

using namespace std::chrono_literals;

void turnLoopUntil(const bool& done)
{
    const QDeadlineTimer limit(10s);
    while (!done && !limit.hasExpired())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
}

TEST(LiveClock, readsWholeMilliseconds)
{
    const LiveClock clock;
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(clock.now().time_since_epoch().count() % 1000, 0);
}

TEST(LiveClock, callsBackOnceAfterTheDelay)
{
    LiveClock clock;
    bool called = false;
    const auto begin = std::chrono::steady_clock::now();
    const auto alarm = clock.after(30ms, [&called] { called = true; });
    turnLoopUntil(called);
    EXPECT_TRUE(called);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, 30ms);
}

TEST(LiveClock, aDroppedAlarmIsSilent)
{
    LiveClock clock;
    bool dropped = false;
    bool later = false;
    auto alarm = clock.after(10ms, [&dropped] { dropped = true; });
    alarm.reset();
    const auto other = clock.after(40ms, [&later] { later = true; });
    turnLoopUntil(later);
    EXPECT_TRUE(later);
    EXPECT_FALSE(dropped);
}

TEST(LiveClock, anAlarmMayBeDroppedByItsOwnCall)
{
    LiveClock clock;
    bool called = false;
    std::unique_ptr<Alarm> alarm;
    alarm = clock.after(1ms, [&] {
        alarm.reset();
        called = true;
    });
    turnLoopUntil(called);
    EXPECT_TRUE(called);
    EXPECT_FALSE(alarm);
}

// What is counted in an int somewhere must not come out as next to nothing.
TEST(LiveClock, whatLiesWeeksAheadIsNotDueNow)
{
    using std::chrono::milliseconds;
    const milliseconds delays[] = {24h * 60, milliseconds((1LL << 31) + 1),
                                   milliseconds((1LL << 32) + 1), milliseconds::max()};
    LiveClock clock;
    bool early = false;
    std::vector<std::unique_ptr<Alarm>> alarms;
    for (const auto delay : delays)
        alarms.push_back(clock.after(delay, [&early] { early = true; }));
    bool later = false;
    const auto other = clock.after(40ms, [&later] { later = true; });
    turnLoopUntil(later);
    EXPECT_TRUE(later);
    EXPECT_FALSE(early);
}

} // namespace
} // namespace vellumor::liveClockTest
