#include "diagnostics/crash/CrashReportState.h"
#include "diagnostics/crash/CrashReporter.h"
#include "platform/linux/crash/ImporterTesting.h"

#include <csignal>

namespace vellumor::realCrashTest {
namespace {

using namespace std::chrono_literals;
using CrashReporter::Properties;
using CrashReporter::Summary;

// A program that crashes in earnest, and all the way that its crash takes from there.
struct RealCrashTest : test::ImporterTest {
    std::vector<Properties> captured;
    std::string state = folder.file("data/crash-state.json");
    int crashes = 0;

    // Lets it crash; the journal is told what systemd-coredump would tell it.
    void crash(const std::string& kind, Instant at)
    {
        const std::string output = folder.file("output-" + std::to_string(++crashes));
        test::ChildProcess program({{VELLUMOR_DELIBERATE_FAULT, kind}, {}, "", output});
        const int status = program.wait(20s).value_or(0);
        ASSERT_TRUE(status == 128 + SIGSEGV || status == 128 + SIGABRT) << status;
        const std::string pid = std::to_string(program.pid());
        auto entry = test::coreDumpEntry(at, program.pid(),
                                         "Process " + pid + " (vellumor) dumped core.\n\n" +
                                             test::contentsOf(output));
        entry["COREDUMP_EXE"] = VELLUMOR_DELIBERATE_FAULT;
        entry["COREDUMP_SIGNAL"] = std::to_string(status - 128);
        entry["COREDUMP_SIGNAL_NAME"] = status == 128 + SIGSEGV ? "SIGSEGV" : "SIGABRT";
        journal.add(test::ownLine(at - 3s, program.pid()));
        journal.add(entry);
    }
    Summary sweep(Instant now)
    {
        return CrashReporter::sweep(files, reports, state, now,
                                    [this](const Properties& crash) { captured.push_back(crash); });
    }
};

TEST_F(RealCrashTest, twoLikeCrashesAreOneEventAndBothAreConsumed)
{
    crash("memory", test::crashTime);
    crash("memory", test::crashTime + 1h);
    EXPECT_EQ(importWith(journal.write()), 2);
    const auto found = digests();
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[0].signature, found[1].signature);
    EXPECT_NE(found[0].incidentID, found[1].incidentID);
    EXPECT_EQ(sweep(test::crashTime + 2h), (Summary{2, 1, 1, 0, 0}));
    ASSERT_EQ(captured.size(), 1U);
    EXPECT_EQ(captured[0].at("exception_type"), "EXC_BAD_ACCESS");
    EXPECT_EQ(captured[0].at("signal"), "SIGSEGV");
    EXPECT_EQ(captured[0].at("area"), "usage"); // where it crashed, and not what had called it
    EXPECT_EQ(captured[0].at("signature"), found[0].signature);
    EXPECT_EQ(captured[0].at("uptime"), "launch");
    EXPECT_EQ(CrashReportState::load(state).consumedIncidents.size(), 2U);
    EXPECT_EQ(sweep(test::crashTime + 48h), (Summary{2, 0, 0, 2, 0}));
}

TEST_F(RealCrashTest, theReportNamesTheFunctionsThatItCrashedIn)
{
    crash("memory", test::crashTime);
    EXPECT_EQ(importWith(journal.write()), 1);
    const std::string report = test::contentsOf(reports + "/Vellumor-2026-03-01-093005.ips");
    for (const char* function : {"\"vellumor::UsagePipeline::fetch\"", "\"vellumor::Poller::tick\"",
                                 "\"main\"", "\"Vellumor\""})
        EXPECT_NE(report.find(function), std::string::npos) << function << report;
    EXPECT_EQ(report.find(folder.path()), std::string::npos);
}

TEST_F(RealCrashTest, anotherFaultHasAnotherSignature)
{
    crash("memory", test::crashTime);
    crash("abort", test::crashTime + 1h);
    EXPECT_EQ(importWith(journal.write()), 2);
    EXPECT_EQ(sweep(test::crashTime + 2h).captured, 2);
    ASSERT_EQ(captured.size(), 2U);
    EXPECT_EQ(captured[1].at("exception_type"), "EXC_CRASH");
    EXPECT_EQ(captured[1].at("signal"), "SIGABRT");
    EXPECT_EQ(captured[1].at("area"), "usage"); // the libraries' own frames do not count
    EXPECT_NE(captured[0].at("signature"), captured[1].at("signature"));
}

} // namespace
} // namespace vellumor::realCrashTest
