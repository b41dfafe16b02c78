#include "diagnostics/crash/CrashReporter.h"

#include "base/Sha256.h"
#include "diagnostics/crash/CrashReportState.h"
#include "diagnostics/crash/Reports.h"
#include "support/FakeClock.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

namespace vellumor::crashReporterTest {
namespace {

using CrashReporter::Properties;
using CrashReporter::Summary;
using test::bodyWith;
using test::frame;
using test::instant;
using Texts = std::vector<std::string>;

const Instant firstDay = instant("2026-03-01T23:59:59.999Z");
const Instant nextDay = instant("2026-03-02T00:00:00Z");

struct CrashReporterTest : testing::Test {
    test::TempFolder folder;
    FileStore files;
    std::string state = folder.file("crash-state.json");
    std::vector<Properties> captured;

    void putReport(const std::string& name, const std::string& incident, const std::string& symbol)
    {
        folder.put("reports/Vellumor-" + name + ".ips",
                   test::reportText(test::header(incident), bodyWith({frame(symbol)})));
    }
    Summary sweep(Instant now)
    {
        return CrashReporter::sweep(files, folder.file("reports"), state, now,
                                    [this](const Properties& crash) { captured.push_back(crash); });
    }
    [[nodiscard]] Texts consumed() const { return CrashReportState::load(state).consumedIncidents; }
};

TEST_F(CrashReporterTest, aCrashIsToldWithItsSixProperties)
{
    putReport("1", "one", "Poller.tick()");
    EXPECT_EQ(sweep(firstDay), (Summary{1, 1, 0, 0, 0}));
    EXPECT_EQ(captured, (std::vector<Properties>{{
                            {"exception_type", "EXC_BAD_ACCESS"},
                            {"signal", "SIGSEGV"},
                            {"area", "poller"},
                            {"signature", Sha256::first8Hex("Poller.tick()")},
                            {"crashed_version", "1.0.0"},
                            {"uptime", "short"},
                        }}));
}

TEST_F(CrashReporterTest, twoLikeCrashesOnOneDayAreOneEventAndBothAreConsumed)
{
    putReport("1", "one", "closure #3 in foo");
    putReport("2", "two", "closure #12 in foo");
    EXPECT_EQ(sweep(firstDay), (Summary{2, 1, 1, 0, 0}));
    EXPECT_EQ(captured.size(), 1U);
    EXPECT_EQ(consumed(), (Texts{"one", "two"}));
}

TEST_F(CrashReporterTest, theSameSignatureIsASecondEventTheNextDay)
{
    putReport("1", "one", "foo");
    (void)sweep(firstDay);
    putReport("2", "two", "foo");
    EXPECT_EQ(sweep(nextDay), (Summary{2, 1, 0, 1, 0}));
    EXPECT_EQ(captured.size(), 2U);
}

TEST_F(CrashReporterTest, aConsumedIncidentIsNeverToldAgain)
{
    putReport("1", "one", "foo");
    (void)sweep(firstDay);
    const std::string before = test::contentsOf(state);
    for (const Instant now : {firstDay, nextDay, nextDay + std::chrono::days(400)})
        EXPECT_EQ(sweep(now), (Summary{1, 0, 0, 1, 0}));
    EXPECT_EQ(captured.size(), 1U);
    EXPECT_EQ(test::contentsOf(state), before);
}

TEST_F(CrashReporterTest, differentSignaturesAreDifferentEvents)
{
    putReport("1", "one", "foo");
    putReport("2", "two", "bar");
    EXPECT_EQ(sweep(firstDay).captured, 2);
}

TEST_F(CrashReporterTest, reportsAreTakenByFileNameAscending)
{
    putReport("b", "two", "foo");
    putReport("a", "one", "bar");
    putReport("c", "three", "foo");
    (void)sweep(firstDay);
    EXPECT_EQ(consumed(), (Texts{"one", "two", "three"}));
}

TEST_F(CrashReporterTest, aCrashWithoutIncidentIsToldOnceADay)
{
    putReport("1", "", "foo");
    EXPECT_EQ(sweep(firstDay).captured, 1);
    EXPECT_EQ(sweep(firstDay).repeated, 1);
    EXPECT_EQ(sweep(nextDay).captured, 1);
}

TEST_F(CrashReporterTest, whatCannotBeReadCostsItsOwnDigestAlone)
{
    folder.put("reports/Vellumor-0.ips", "broken");
    folder.put("reports/Vellumor-1.ips", "{}\n{}");
    putReport("2", "one", "foo");
    EXPECT_EQ(sweep(firstDay), (Summary{3, 1, 0, 0, 2}));
}

TEST_F(CrashReporterTest, withoutReportsNothingIsWritten)
{
    EXPECT_EQ(sweep(firstDay), Summary());
    folder.makeFolder("reports");
    EXPECT_EQ(sweep(firstDay), Summary());
    EXPECT_EQ(test::namesIn(folder.path()), Texts{"reports"});
    folder.put("reports/Vellumor-0.ips", "broken");
    EXPECT_EQ(sweep(firstDay), (Summary{1, 0, 0, 0, 1}));
    EXPECT_EQ(test::namesIn(folder.path()), Texts{"reports"});
}

TEST_F(CrashReporterTest, aBrokenStateIsAnEmptyOne)
{
    folder.put("crash-state.json", "broken");
    putReport("1", "one", "foo");
    EXPECT_EQ(sweep(firstDay).captured, 1);
    EXPECT_EQ(consumed(), Texts{"one"});
}

TEST_F(CrashReporterTest, aStateThatCannotBeWrittenDisturbsNothing)
{
    state = folder.put("file", "") + "/crash-state.json";
    putReport("1", "one", "foo");
    EXPECT_EQ(sweep(firstDay).captured, 1);
    EXPECT_EQ(sweep(firstDay).captured, 1); // it was not noted
}

} // namespace
} // namespace vellumor::crashReporterTest
