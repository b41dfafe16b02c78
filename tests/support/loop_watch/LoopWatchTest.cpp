#include "support/loop_watch/LoopReport.h"

#include "support/TempFolder.h"
#include "support/private_bus/ChildProcess.h"

#include <gtest/gtest.h>

#include <sched.h>

#include <string>
#include <utility>
#include <vector>

namespace vellumor::loopWatchTest {
namespace {

using test::ChildProcess;
using test::LoopReport;
using test::TempFolder;

constexpr std::uint64_t limit = 50'000; // microseconds

// By which of the two loops of Qt the program turns.
struct LoopWatchTest : testing::TestWithParam<const char*> {
    TempFolder folder;

    // What the watch says of a program that does `deed`, and for how many milliseconds it was at
    // it.
    std::pair<LoopReport, std::uint64_t> watched(const std::string& deed,
                                                 const std::string& milliseconds,
                                                 std::vector<std::string> prefix = {})
    {
        ChildProcess::Command command;
        command.arguments = std::move(prefix);
        command.arguments.insert(command.arguments.end(),
                                 {"env", std::string("LD_PRELOAD=") + VELLUMOR_LOOP_WATCH,
                                  std::string(LoopReport::variable) + "=" + folder.file("report"),
                                  VELLUMOR_TURNING_LOOP, deed, milliseconds});
        command.environment = {{"PATH", "/usr/bin:/bin"}, {GetParam(), "1"}};
        command.outputFile = folder.file("output");
        const auto took = std::stoull(test::runToEnd(command));
        const auto report = test::readLoopReport(folder.file("report"));
        EXPECT_TRUE(report.has_value()) << "no wait was seen";
        return {report.value_or(LoopReport()), took};
    }
};

INSTANTIATE_TEST_SUITE_P(Loops, LoopWatchTest, testing::Values("A_LOOP_OF_GLIB", "QT_NO_GLIB"),
                         [](const auto& loop) { return std::string(loop.param); });

TEST_P(LoopWatchTest, aLoopThatIsKeptFromTurningForEightyMillisecondsIsCaught)
{
    for (const char* deed : {"sleep", "pipe", "work"}) {
        SCOPED_TRACE(deed);
        const auto [report, took] = watched(deed, "80");
        EXPECT_GE(report.longestMicroseconds, 79'000U);
        EXPECT_GE(report.longestTurn, 1U);
        EXPECT_LE(report.longestTurn, report.turns);
    }
}

TEST_P(LoopWatchTest, theStartOtherThreadsAndTheLoopsOwnWaitsDoNotCount)
{
    for (const char* deed : {"start", "thread", "loop"}) {
        SCOPED_TRACE(deed);
        const auto [report, took] = watched(deed, "80");
        EXPECT_LT(report.longestMicroseconds, limit);
    }
}

// On one processor with another program that never stops, and gets most of it.
TEST_P(LoopWatchTest, theTimeInWhichOthersHadTheProcessorDoesNotCount)
{
    const std::string processor = std::to_string(::sched_getcpu());
    ChildProcess::Command command;
    command.arguments = {"taskset", "-c", processor, "sh", "-c", "while :; do :; done"};
    command.environment = {{"PATH", "/usr/bin:/bin"}};
    command.outputFile = folder.file("other");
    const ChildProcess other(command);
    const auto [report, took] =
        watched("work", "30", {"taskset", "-c", processor, "nice", "-n", "5"});
    EXPECT_GE(took, 60U) << "nobody else had it";
    EXPECT_LT(report.longestMicroseconds, limit);
}

} // namespace
} // namespace vellumor::loopWatchTest
