#include "usage/HeadlessUsage.h"

#include "store/SealableFileCalls.h"
#include "support/FakeProcessRunner.h"
#include "support/TempFolder.h"

#include <QCoroCore>

#include <gtest/gtest.h>

namespace vellumor::headlessUsageTest {
namespace {

using namespace std::chrono_literals;
using test::FakeProcessRunner;
using test::TempFolder;

struct HeadlessUsageTest : testing::Test {
    TempFolder folder;
    FakeProcessRunner processes;
    Worker worker;
    SealableFileCalls calls;
    FileStore files{calls};
    HeadlessUsage usage{processes,
                        worker,
                        files,
                        {{{"HOME", "/home/me"},
                          {"LANG", "de_DE.UTF-8"},
                          {"VELLUMOR_API_BASE", "http://127.0.0.1:1"},
                          {"VELLUMOR_CLAUDE_PATH", "/x"},
                          {"VELLUMOR_", "x"},
                          {"MY_VELLUMOR_X", "kept"},
                          {"vellumor_x", "kept"}},
                         "/home/me",
                         "/bin/zsh"}};

    int spawn(const std::string& configDir)
    {
        return QCoro::waitFor(usage.spawnUsage("/opt/x/claude", configDir, folder.file("revive")));
    }
};

TEST_F(HeadlessUsageTest, asksTheLoginShellForTwoMinutesAtMostAndReadsNothing)
{
    EXPECT_EQ(spawn("/home/me/.claude-work"), 0);
    ASSERT_EQ(processes.requests.size(), 1U);
    const ProcessRequest& request = processes.requests.front();
    EXPECT_EQ(request.program, "/bin/zsh");
    EXPECT_EQ(request.arguments, (std::vector<std::string>{
                                     "-ilc", "CLAUDE_CONFIG_DIR='/home/me/.claude-work' "
                                             "PATH='/opt/x':\"$PATH\" '/opt/x/claude' -p '/usage' "
                                             ">/dev/null 2>&1"}));
    EXPECT_EQ(request.workingDirectory, folder.file("revive"));
    EXPECT_EQ(test::modeOf(folder.file("revive")), 0700U); // it was missing
    EXPECT_EQ(request.timeLimit, 120s);
    EXPECT_EQ(request.outputLimit, 0U);
}

TEST_F(HeadlessUsageTest, theDefaultDirectoryIsTheOneBelowTheGivenHome)
{
    spawn("/home/me/.claude");
    EXPECT_TRUE(processes.requests.front().arguments.back().starts_with(
        "unset CLAUDE_CONFIG_DIR; PATH='/opt/x'"));
}

TEST_F(HeadlessUsageTest, passesOnTheEnvironmentWithoutTheVariablesOfTheProgram)
{
    spawn("/home/me/.claude");
    EXPECT_EQ(processes.requests.front().environment, (Environment{{"HOME", "/home/me"},
                                                                   {"LANG", "de_DE.UTF-8"},
                                                                   {"MY_VELLUMOR_X", "kept"},
                                                                   {"vellumor_x", "kept"}}));
}

TEST_F(HeadlessUsageTest, givesTheStatusAsItCame)
{
    for (const int status : {0, 1, 3, 15, 127, 255, ProcessResult::notLaunched}) {
        processes.answer({status, "", false});
        EXPECT_EQ(spawn("/home/me/.claude"), status);
    }
}

TEST_F(HeadlessUsageTest, namesTheDirectoryAsItIsSpelledOnDisk)
{
    const std::string decomposed = folder.makeFolder(".claude-e\u0301");
    spawn(folder.file(".claude-\u00E9"));
    EXPECT_TRUE(processes.requests.front().arguments.back().starts_with("CLAUDE_CONFIG_DIR='" +
                                                                        decomposed + "' PATH="));
}

TEST_F(HeadlessUsageTest, worksInTheFolderAsItIsSpelledOnDisk)
{
    const std::string decomposed = folder.makeFolder("jose\u0301");
    QCoro::waitFor(usage.spawnUsage("/opt/x/claude", "/home/me/.claude",
                                    folder.file("jos\u00E9/data/revive")));
    EXPECT_EQ(processes.requests.front().workingDirectory, decomposed + "/data/revive");
    EXPECT_EQ(test::modeOf(decomposed + "/data/revive"), 0700U);
    EXPECT_EQ(test::namesIn(folder.path()), std::vector<std::string>{"jose\u0301"});
}

// Whoever has all data deleted may do so while a revival is about to begin.
TEST_F(HeadlessUsageTest, afterTheSealNoWorkFolderIsMade)
{
    calls.seal();
    spawn("/home/me/.claude");
    EXPECT_EQ(test::namesIn(folder.path()), std::vector<std::string>());
}

TEST_F(HeadlessUsageTest, severalMayRunAtATime)
{
    processes.answerLate({1, "", false});
    processes.answerLate({2, "", false});
    auto first = usage.spawnUsage("/opt/x/claude", "/home/me/.claude-a", "/data/revive");
    auto second = usage.spawnUsage("/opt/x/claude", "/home/me/.claude-b", "/data/revive");
    while (processes.running() < 2)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    processes.finishNext();
    processes.finishNext();
    EXPECT_EQ(QCoro::waitFor(std::move(first)), 1);
    EXPECT_EQ(QCoro::waitFor(std::move(second)), 2);
}

} // namespace
} // namespace vellumor::headlessUsageTest
