#include "platform/linux/crash/ImporterTesting.h"
#include "support/FakeProcessRunner.h"
#include "support/LoopTicks.h"
#include "support/PassWorker.h"

#include <QDeadlineTimer>

namespace vellumor::journalCrashImporterHostileTest {
namespace {

using namespace std::chrono_literals;
using test::crashTime;
using test::installedAt;
using Texts = std::vector<std::string>;

struct JournalCrashImporterHostileTest : test::ImporterTest {
    // A line as journalctl writes it.
    static std::string line(Instant crashedAt, int pid, const std::string& message)
    {
        return Json({{"_BOOT_ID", test::bootId},
                     {"COREDUMP_PID", std::to_string(pid)},
                     {"COREDUMP_EXE", "/opt/vellumor/vellumor"},
                     {"COREDUMP_SIGNAL_NAME", "SIGSEGV"},
                     {"COREDUMP_TIMESTAMP", test::micros(crashedAt)},
                     {"MESSAGE", message}})
                   .dump() +
               "\n";
    }
    // The answer to the first question; whoever asks more hears nothing.
    int importOf(const std::string& answer, int status = 0)
    {
        test::FakeProcessRunner answering;
        answering.answer({status, answer, false});
        JournalCrashImporter importer(answering, worker, files, {executable, "1", reports, "/x"});
        const int written = QCoro::waitFor(importer.importReports(installedAt));
        requests = std::move(answering.requests);
        return written;
    }
    std::vector<ProcessRequest> requests;
};

TEST_F(JournalCrashImporterHostileTest, whatIsNoEntryIsPassedOver)
{
    const std::string good = line(crashTime, 1, "");
    EXPECT_EQ(importOf("garbage\n\n{}\n[1]\n" + good + "-- No entries --\n"), 1);
    EXPECT_EQ(test::namesIn(reports).size(), 1U);
}

TEST_F(JournalCrashImporterHostileTest, anAnswerThatBreaksOffCountsUpToItsLastWholeLine)
{
    const std::string second = line(crashTime + 1s, 2, "");
    EXPECT_EQ(importOf(line(crashTime, 1, "") + second.substr(0, second.size() - 1), SIGTERM), 1);
    EXPECT_EQ(test::namesIn(reports), Texts{"Vellumor-2026-03-01-093005.ips"});
}

TEST_F(JournalCrashImporterHostileTest, aHugeMessageMakesAReportOfBoundedSize)
{
    std::string message;
    for (int thread = 0; thread < 60; ++thread) {
        message += "Stack trace of thread 1:\n";
        for (int i = 0; i < 60; ++i)
            message += "#0  0x1 " + std::string(1500, 'x') + " (" + std::string(500, 'm') +
                       std::to_string(i) + " + 0x1)\n";
    }
    EXPECT_EQ(importOf(line(crashTime, 1, message)), 1);
    const auto report = test::contentsOf(reports + "/Vellumor-2026-03-01-093005.ips");
    EXPECT_GT(report.size(), 0U);
    EXPECT_LT(report.size(), 2'000'000U);
    EXPECT_EQ(digests().size(), 1U);
}

TEST_F(JournalCrashImporterHostileTest, whatAskingCostsIsLimited)
{
    (void)importOf(line(crashTime, 1, "") + line(crashTime, 2, ""));
    ASSERT_EQ(requests.size(), 3U); // for the crashes, and for the start of each
    for (const ProcessRequest& request : requests) {
        EXPECT_EQ(request.timeLimit, 10s);
        EXPECT_GT(request.outputLimit, 0U);
        EXPECT_LE(request.outputLimit, 8U * 1024 * 1024);
        EXPECT_EQ(request.workingDirectory, "/");
        EXPECT_EQ(request.environment.count("HOME"), 0U);
    }
}

TEST_F(JournalCrashImporterHostileTest, aJournalThatFailsForOneStartIsNotAskedForTheOthers)
{
    test::FakeProcessRunner failing;
    failing.answer({0, line(crashTime, 1, "") + line(crashTime, 2, ""), false});
    failing.answer({SIGTERM, "", false});
    JournalCrashImporter importer(failing, worker, files, {executable, "1", reports, "/x"});
    EXPECT_EQ(QCoro::waitFor(importer.importReports(installedAt)), 2);
    EXPECT_EQ(failing.requests.size(), 2U);
}

TEST_F(JournalCrashImporterHostileTest, theMainThreadTurnsOnWhileTheJournalKeepsWaiting)
{
    const test::LoopTicks ticks;
    const std::string slow = journal.makeScript("sleep 0.5; exit 0");
    EXPECT_EQ(importWith(slow), 0);
    EXPECT_GE(ticks.count(), 20);
}

TEST_F(JournalCrashImporterHostileTest, theOrderOfTheAnswerIsTurnedRound)
{
    const auto dumps = JournalCrashImporter::crashesIn(
        line(crashTime + 2s, 3, "") + line(crashTime + 1s, 2, "") + line(crashTime, 1, ""),
        crashTime + 1s);
    ASSERT_EQ(dumps.size(), 2U);
    EXPECT_EQ(dumps[0].pid, 2);
    EXPECT_EQ(dumps[1].pid, 3);
}

} // namespace
} // namespace vellumor::journalCrashImporterHostileTest
