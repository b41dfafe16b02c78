#include "platform/linux/QtProcessRunner.h"

#include "async/LiveClock.h"
#include "support/FakeClock.h"
#include "support/ProcessTesting.h"
#include "support/private_bus/ChildProcess.h"

#include <QCoroCore>

#include <QDeadlineTimer>

#include <gtest/gtest.h>

#include <sys/prctl.h>
#include <sys/wait.h>

namespace vellumor::qtProcessRunnerEndTest {
namespace {

using namespace std::chrono_literals;
using test::areGone;
using test::FakeClock;
using test::isGone;
using test::pidsIn;
using test::TempFolder;

constexpr auto limit = 10s;

// Real children, and a clock that moves when they have come where a test wants them.
bool isStopped(pid_t pid)
{
    const std::string status = test::contentsOf("/proc/" + std::to_string(pid) + "/stat");
    return status.find(") T ") != std::string::npos;
}

struct QtProcessRunnerEndTest : testing::Test {
    TempFolder folder;
    FakeClock clock;
    QtProcessRunner runner{clock};
    std::optional<ProcessResult> result;
    Task<> task;

    // What a test has left running.
    ~QtProcessRunnerEndTest() override
    {
        for (const pid_t pid : pids())
            ::kill(pid, SIGKILL);
    }

    [[nodiscard]] std::vector<pid_t> pids() const { return pidsIn(folder.file("pids")); }
    [[nodiscard]] bool has(const char* file) const
    {
        return !test::contentsOf(folder.file(file)).empty();
    }
    Task<> note(ProcessRequest request) { result = co_await runner.run(std::move(request)); }

    // The script appends to "pids" the ids of `count` processes that will hang.
    void start(const std::string& script, std::size_t count)
    {
        ProcessRequest request = test::shellRequest(folder, script);
        request.timeLimit = limit;
        task = note(std::move(request));
        ASSERT_TRUE(test::turnLoopUntil([&] { return pids().size() == count; }));
    }
    // What is due at once does come; time does not pass.
    bool turnLoopUntil(const std::function<bool()>& done)
    {
        return test::turnLoopUntil([&] {
            clock.advance(0ms);
            return done();
        });
    }
    // Without time passing at first. A group of which somebody is still ending is looked at again
    // and again, though, and that takes time.
    void expectStatus(int status)
    {
        const QDeadlineTimer patience(1000);
        ASSERT_TRUE(test::turnLoopUntil([&] {
            clock.advance(patience.hasExpired() ? 50ms : 0ms);
            return result.has_value();
        }));
        EXPECT_EQ(result->status, status);
        EXPECT_EQ(clock.pendingAlarms(), 0U);
    }
};

TEST_F(QtProcessRunnerEndTest, aChildMayUseItsTimeToTheLast)
{
    start("echo $$ >>pids; exec sleep 60", 1);
    clock.advance(limit - 1ms);
    EXPECT_FALSE(isGone(pids().front()));
    EXPECT_EQ(clock.pendingAlarms(), 1U);
    clock.advance(1ms);
    expectStatus(SIGTERM);
}

TEST_F(QtProcessRunnerEndTest, itsWholeGroupIsToldToEnd)
{
    start("sleep 60 & echo $! >>pids; "
          "(sleep 60 & echo $! >>pids; wait) & echo $! >>pids; "
          "echo $$ >>pids; wait",
          4);
    const auto all = pids();
    clock.advance(limit);
    EXPECT_TRUE(turnLoopUntil([&] { return areGone(all); }));
    clock.advance(2s); // in case the shell was gone before the others
    expectStatus(SIGTERM);
}

TEST_F(QtProcessRunnerEndTest, aChildThatEndsWhenItIsToldGivesItsOwnStatusAtOnce)
{
    start("trap 'echo bye; exit 5' TERM; echo $$ >>pids; while :; do sleep 0.01; done", 1);
    clock.advance(limit);
    expectStatus(5);
    EXPECT_EQ(result->output, "bye\n");
}

TEST_F(QtProcessRunnerEndTest, aChildThatTakesNoNoticeIsKilledTwoSecondsLater)
{
    start("trap 'echo x >told' TERM; (trap '' TERM; echo x >ready; exec sleep 60) & "
          "until [ -e ready ]; do sleep 0.01; done; "
          "echo $! >>pids; echo $$ >>pids; while :; do sleep 0.01; done",
          2);
    const auto all = pids();
    clock.advance(limit);
    ASSERT_TRUE(turnLoopUntil([&] { return has("told"); }));
    clock.advance(1999ms);
    QCoreApplication::processEvents();
    EXPECT_FALSE(isGone(all[0]));
    EXPECT_FALSE(isGone(all[1]));
    EXPECT_FALSE(result);
    clock.advance(1ms);
    expectStatus(SIGKILL);
    EXPECT_TRUE(turnLoopUntil([&] { return areGone(all); }));
}

TEST_F(QtProcessRunnerEndTest, aChildThatIsStoppedIsKilledTwoSecondsLater)
{
    start("echo $$ >>pids; kill -STOP $$", 1);
    ASSERT_TRUE(turnLoopUntil([&] { return isStopped(pids().front()); }));
    clock.advance(limit);
    clock.advance(2s);
    expectStatus(SIGKILL);
}

constexpr const char* leaderOfASlowOne =
    "(trap 'echo x >told; until [ -e go ]; do sleep 0.01; done; echo x >saved; exit' TERM; "
    "echo x >ready; while :; do sleep 0.01; done) & "
    "until [ -e ready ]; do sleep 0.01; done; echo $! >>pids; echo $$ >>pids; wait";

TEST_F(QtProcessRunnerEndTest, oneOfTheGroupThatIsStillEndingIsWaitedForThoughTheShellIsGone)
{
    // Who loses its parent becomes a child of this process, which alone sees to it that it is gone.
    ::prctl(PR_SET_CHILD_SUBREAPER, 1);
    start(leaderOfASlowOne, 2);
    const auto all = pids();
    clock.advance(limit);
    ASSERT_TRUE(turnLoopUntil([&] { return ::kill(all[1], 0) != 0 && has("told"); }));
    clock.advance(1s);
    QCoreApplication::processEvents();
    EXPECT_FALSE(result);
    folder.put("go", "");
    ASSERT_TRUE(turnLoopUntil([&] { return ::waitpid(all[0], nullptr, WNOHANG) == all[0]; }));
    ::prctl(PR_SET_CHILD_SUBREAPER, 0);
    EXPECT_TRUE(has("saved"));
    clock.advance(100ms); // and not the whole of its two seconds
    expectStatus(SIGTERM);
}

TEST_F(QtProcessRunnerEndTest, oneOfTheGroupThatTakesLongerIsKilledThoughTheShellIsGone)
{
    start(leaderOfASlowOne, 2);
    const auto all = pids();
    clock.advance(limit);
    // Gone, and taken notice of.
    ASSERT_TRUE(turnLoopUntil([&] { return ::kill(all[1], 0) != 0 && has("told"); }));
    clock.advance(1999ms);
    QCoreApplication::processEvents();
    EXPECT_FALSE(isGone(all[0]));
    EXPECT_FALSE(result);
    clock.advance(1ms);
    EXPECT_TRUE(turnLoopUntil([&] { return isGone(all[0]); }));
    expectStatus(SIGTERM);
}

TEST_F(QtProcessRunnerEndTest, aShellThatIsSlowToEndGivesTheOthersNoMoreTime)
{
    start("(trap 'echo x >told' TERM; echo x >ready; while :; do sleep 0.01; done) & "
          "until [ -e ready ]; do sleep 0.01; done; echo $! >>pids; "
          "trap 'until [ -e go ]; do sleep 0.01; done; exit 6' TERM; echo $$ >>pids; "
          "while :; do sleep 0.01; done",
          2);
    const auto all = pids();
    clock.advance(limit);
    ASSERT_TRUE(turnLoopUntil([&] { return has("told"); }));
    clock.advance(1900ms);
    folder.put("go", "");
    ASSERT_TRUE(turnLoopUntil([&] { return ::kill(all[1], 0) != 0; }));
    clock.advance(99ms);
    QCoreApplication::processEvents();
    EXPECT_FALSE(isGone(all[0]));
    EXPECT_FALSE(result);
    clock.advance(1ms);
    expectStatus(6);
    EXPECT_TRUE(turnLoopUntil([&] { return isGone(all[0]); }));
}

TEST_F(QtProcessRunnerEndTest, whatAChildLeavesBehindInGoodTimeIsNeitherWaitedForNorEnded)
{
    start("sleep 60 & echo $! >>pids; echo left", 1);
    expectStatus(0);
    EXPECT_EQ(result->output, "left\n");
    clock.advance(limit + 2s);
    QCoreApplication::processEvents();
    EXPECT_FALSE(isGone(pids().front()));
}

TEST_F(QtProcessRunnerEndTest, aDaemonOutlivesTheTimeLimitAndIsNotWaitedFor)
{
    start("setsid sleep 60 & until [ \"$(cut -d' ' -f6 /proc/$!/stat)\" = $! ]; do :; done; "
          "echo $! >>pids; echo $$ >>pids; wait",
          2);
    const auto all = pids();
    clock.advance(limit);
    expectStatus(SIGTERM);
    EXPECT_FALSE(isGone(all[0]));
}

TEST_F(QtProcessRunnerEndTest, aDaemonThatFloodsTheOutputDoesNotHoldUpTheResult)
{
    start("setsid yes & until [ \"$(cat /proc/$!/comm)\" = yes ]; do :; done; "
          "echo $! >>pids; exit 4",
          1);
    expectStatus(4);
    EXPECT_TRUE(turnLoopUntil([&] { return isGone(pids().front()); })) << "nobody reads it";
}

struct QtProcessRunnerLiveEndTest : testing::Test {
    TempFolder folder;
    LiveClock clock;
    QtProcessRunner runner{clock};
};

TEST_F(QtProcessRunnerLiveEndTest, aChildThatHangsIsToldToEndAtItsTimeLimit)
{
    ProcessRequest request = test::shellRequest(folder, "exec sleep 60");
    request.timeLimit = 200ms;
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(QCoro::waitFor(runner.run(request)).status, SIGTERM);
    const auto elapsed = std::chrono::steady_clock::now() - begin;
    EXPECT_GE(elapsed, 200ms);
    EXPECT_LT(elapsed, 20s);
}

TEST_F(QtProcessRunnerLiveEndTest, programEndWithAChildUnderWayIsQuiet)
{
    const std::string pid = folder.file("pid");
    test::ChildProcess::Command command;
    command.arguments = {VELLUMOR_LEAVING_WITH_A_CHILD, pid};
    command.environment = {{"PATH", "/usr/bin:/bin"}};
    command.outputFile = folder.file("log");
    EXPECT_EQ(test::runToEnd(command), "");
    ASSERT_EQ(pidsIn(pid).size(), 1U);
    ::kill(pidsIn(pid).front(), SIGKILL);
}

} // namespace
} // namespace vellumor::qtProcessRunnerEndTest
