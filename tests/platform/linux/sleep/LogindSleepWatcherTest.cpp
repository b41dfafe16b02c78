#include "platform/linux/LogindSleepWatcher.h"

#include "support/FakeClock.h"
#include "support/PassWorker.h"
#include "support/TempFolder.h"
#include "support/private_bus/PrivateBus.h"

#include <QCoreApplication>
#include <QDeadlineTimer>

#include <gtest/gtest.h>

#include <vector>

namespace vellumor {
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
    // False when they have not come within ten seconds.
    bool waitForCalls(std::size_t count) const
    {
        const QDeadlineTimer limit(10'000);
        while (calls.size() < count && !limit.hasExpired())
            QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        return calls.size() == count;
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
} // namespace vellumor
