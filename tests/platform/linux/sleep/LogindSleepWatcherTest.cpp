#include "platform/linux/LogindSleepWatcher.h"

#include "support/FakeClock.h"
#include "support/LoopTicks.h"
#include "support/PassWorker.h"
#include "support/SilentSocket.h"
#include "support/TempFolder.h"
#include "support/private_bus/PrivateBus.h"

#include <QCoreApplication>
#include <QDeadlineTimer>

#include <gtest/gtest.h>

#include <functional>
#include <vector>

namespace vellumor::logindSleepWatcherTest {
namespace {

using namespace std::chrono_literals;
using test::ChildProcess;
using test::FakeClock;
using test::PrivateBus;
using test::TempFolder;
using Calls = std::vector<std::string>;

struct LogindSleepWatcherTest : testing::Test {
    TempFolder folder;
    FakeClock clock;
    Worker worker;
    LogindSleepWatcher::Uptime uptime{1000s, 900s};
    Calls calls;

    std::unique_ptr<LogindSleepWatcher> watcher(const std::string& address)
    {
        auto made =
            std::make_unique<LogindSleepWatcher>(worker, address, clock, [this] { return uptime; });
        made->start([this] { calls.emplace_back("sleep"); },
                    [this] { calls.emplace_back("wake"); });
        test::passWorker(worker);
        return made;
    }
    // False when it has not come true within ten seconds.
    static bool waitUntil(const std::function<bool()>& isTrue)
    {
        const QDeadlineTimer limit(10'000);
        while (!isTrue() && !limit.hasExpired())
            QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        return isTrue();
    }
    bool waitForCalls(std::size_t count) const
    {
        return waitUntil([&] { return calls.size() >= count; }) && calls.size() == count;
    }
    // Whether it comes to look at the clocks, or to leave them alone.
    bool waitForLooking(bool isLooking) const
    {
        return waitUntil([&] { return clock.pendingAlarms() == (isLooking ? 1U : 0U); });
    }
    void pass(std::chrono::seconds awake, std::chrono::seconds asleep)
    {
        uptime.withSleep += awake + asleep;
        uptime.withoutSleep += awake;
        clock.advance(awake);
    }
};

struct LogindSleepWatcherOnABusTest : LogindSleepWatcherTest {
    PrivateBus bus{folder.makeFolder("bus")};

    std::unique_ptr<ChildProcess> logind(const std::string& name)
    {
        auto started = std::make_unique<ChildProcess>(
            bus.command({"/usr/bin/python3", VELLUMOR_FAKE_LOGIND, name}, "logind"));
        bus.waitFor(name);
        return started;
    }
    void tell(const std::string& name, bool isBeginning) const
    {
        bus.call(name, "/org/freedesktop/login1", "org.freedesktop.login1.Manager.Sleep",
                 {isBeginning ? "boolean:true" : "boolean:false"});
    }
};

TEST_F(LogindSleepWatcherOnABusTest, sleepAndWakeAreToldAsTheyCome)
{
    const auto process = logind("org.freedesktop.login1");
    const auto watching = watcher(bus.address());
    tell("org.freedesktop.login1", true);
    ASSERT_TRUE(waitForCalls(1));
    tell("org.freedesktop.login1", false);
    ASSERT_TRUE(waitForCalls(2));
    EXPECT_EQ(calls, (Calls{"sleep", "wake"}));
    EXPECT_EQ(clock.pendingAlarms(), 0U); // nothing runs while nothing is due
}

TEST_F(LogindSleepWatcherOnABusTest, aLogindThatComesLaterIsHeardToo)
{
    const auto watching = watcher(bus.address());
    const auto process = logind("org.freedesktop.login1");
    tell("org.freedesktop.login1", true);
    EXPECT_TRUE(waitForCalls(1));
}

TEST_F(LogindSleepWatcherOnABusTest, nobodyElseIsBelieved)
{
    const auto process = logind("org.example.login1");
    const auto real = logind("org.freedesktop.login1");
    const auto watching = watcher(bus.address());
    tell("org.example.login1", true);
    tell("org.freedesktop.login1", false);
    ASSERT_TRUE(waitForCalls(1));
    EXPECT_EQ(calls, Calls{"wake"});
}

TEST_F(LogindSleepWatcherOnABusTest, theClocksAreLookedAtAsLongAsThereIsNoLogind)
{
    const auto watching = watcher(bus.address());
    ASSERT_TRUE(waitForLooking(true));
    pass(30s, 31s);
    EXPECT_EQ(calls, Calls{"wake"});
    auto process = logind("org.freedesktop.login1");
    EXPECT_TRUE(waitForLooking(false));
    pass(3600s, 3600s); // nobody looks
    EXPECT_EQ(calls, Calls{"wake"});
    process.reset();
    EXPECT_TRUE(waitForLooking(true));
    pass(30s, 0s); // what was slept while logind was there is its own
    EXPECT_EQ(calls, Calls{"wake"});
    pass(30s, 31s);
    EXPECT_EQ(calls, (Calls{"wake", "wake"}));
}

TEST_F(LogindSleepWatcherOnABusTest, aLogindThatGoesAwayDuringASleepEndsIt)
{
    auto process = logind("org.freedesktop.login1");
    const auto watching = watcher(bus.address());
    tell("org.freedesktop.login1", true);
    ASSERT_TRUE(waitForCalls(1));
    process.reset();
    ASSERT_TRUE(waitForCalls(2));
    EXPECT_EQ(calls, (Calls{"sleep", "wake"}));
    EXPECT_TRUE(waitForLooking(true));
    pass(30s, 0s);
    process = logind("org.freedesktop.login1");
    EXPECT_TRUE(waitForLooking(false));
    process.reset();
    EXPECT_TRUE(waitForLooking(true));
    EXPECT_EQ(calls, (Calls{"sleep", "wake"})); // told once
}

TEST_F(LogindSleepWatcherOnABusTest, aBusThatIsLostDuringASleepEndsIt)
{
    const auto process = logind("org.freedesktop.login1");
    const auto watching = watcher(bus.address());
    tell("org.freedesktop.login1", true);
    ASSERT_TRUE(waitForCalls(1));
    bus.kill();
    ASSERT_TRUE(waitForCalls(2));
    EXPECT_EQ(calls, (Calls{"sleep", "wake"}));
    EXPECT_TRUE(waitForLooking(true));
    pass(30s, 31s);
    EXPECT_EQ(calls, (Calls{"sleep", "wake", "wake"}));
}

TEST_F(LogindSleepWatcherOnABusTest, aBusThatIsLostWhileTheMachineIsAwakeLeavesTheClocks)
{
    const auto process = logind("org.freedesktop.login1");
    const auto watching = watcher(bus.address());
    tell("org.freedesktop.login1", false); // so that it is known to be there
    ASSERT_TRUE(waitForCalls(1));
    ASSERT_TRUE(waitForLooking(false));
    bus.kill();
    EXPECT_TRUE(waitForLooking(true));
    EXPECT_EQ(calls, Calls{"wake"});
    pass(30s, 31s);
    EXPECT_EQ(calls, (Calls{"wake", "wake"}));
}

TEST_F(LogindSleepWatcherTest, aBusThatNeverAnswersHoldsNobodyUpAndLeavesTheClocks)
{
    const test::SilentSocket silent(folder.file("bus"));
    const test::LoopTicks ticks;
    const auto watching = watcher(silent.busAddress());
    EXPECT_TRUE(waitForLooking(true));
    EXPECT_GE(ticks.count(), 50); // of the two seconds that a bus is given
    pass(30s, 31s);
    EXPECT_EQ(calls, Calls{"wake"});
}

TEST_F(LogindSleepWatcherTest, withoutABusASleepIsNoticedByItsLength)
{
    const auto watching = watcher("unix:path=" + folder.file("nowhere"));
    pass(30s, 0s);
    pass(30s, 30s); // too short to tell from a clock that drifts
    EXPECT_EQ(calls, Calls());
    pass(30s, 31s);
    EXPECT_EQ(calls, Calls{"wake"});
    pass(30s, 0s);
    EXPECT_EQ(calls, Calls{"wake"});
    pass(30s, 3600s);
    EXPECT_EQ(calls, (Calls{"wake", "wake"}));
}

TEST_F(LogindSleepWatcherTest, theClockOfTheSystemThatGoesOnInASleepIsNeverBehindTheOther)
{
    const auto system = LogindSleepWatcher::systemUptime();
    EXPECT_GE(system.withSleep + 5ms, system.withoutSleep);
    EXPECT_GT(system.withoutSleep, 0ms);
}

} // namespace
} // namespace vellumor::logindSleepWatcherTest
