#include "diagnostics/LaunchSweep.h"

#include "support/FakeClock.h"
#include "support/TempFolder.h"

#include <QCoroCore>

#include <gtest/gtest.h>

#include <thread>

namespace vellumor::launchSweepTest {
namespace {

using test::instant;

constexpr const char* report = "{\"incident_id\":\"one\"}\n{\"exception\":{\"signal\":\"SIGBUS\"}}";

// Brings one report, unless there is nothing to bring.
struct FakeImporter final : CrashReportImporter {
    explicit FakeImporter(const test::TempFolder& folder)
        : home(folder)
    {
    }
    const test::TempFolder& home;
    bool hasCrash = true;
    std::vector<Instant> asked;

    Task<int> importReports(Instant since) override
    {
        asked.push_back(since);
        if (hasCrash)
            home.put("data/Vellumor/DiagnosticReports/Vellumor-1.ips", report);
        co_return hasCrash ? 1 : 0;
    }
};

struct LaunchSweepTest : testing::Test {
    test::TempFolder home;
    Folders folders{home.path(), home.file("data"), home.file("config")};
    FileStore files;
    Worker worker;
    FakeImporter importer{home};
    std::vector<CrashReporter::Properties> captured;
    std::vector<std::thread::id> threads;

    CrashReporter::Summary sweep(Instant now)
    {
        const auto capture = [this](const CrashReporter::Properties& crash) {
            captured.push_back(crash);
            threads.push_back(std::this_thread::get_id());
        };
        return QCoro::waitFor(CrashReporter::sweepOnLaunch(
            {importer, worker, files, folders, capture}, instant("2026-01-01T00:00:00Z"), now));
    }
};

TEST_F(LaunchSweepTest, whatTheImporterBringsIsToldInTheSameStartOnTheMainThread)
{
    EXPECT_EQ(sweep(instant("2026-03-01T00:00:00Z")), (CrashReporter::Summary{1, 1, 0, 0, 0}));
    EXPECT_EQ(importer.asked, std::vector<Instant>{instant("2026-01-01T00:00:00Z")});
    ASSERT_EQ(captured.size(), 1U);
    EXPECT_EQ(captured[0].at("signal"), "SIGBUS");
    EXPECT_EQ(threads, std::vector<std::thread::id>{std::this_thread::get_id()});
}

TEST_F(LaunchSweepTest, theNextStartTellsNothingOfIt)
{
    (void)sweep(instant("2026-03-01T00:00:00Z"));
    EXPECT_EQ(sweep(instant("2026-03-02T00:00:00Z")), (CrashReporter::Summary{1, 0, 0, 1, 0}));
    EXPECT_EQ(captured.size(), 1U);
}

TEST_F(LaunchSweepTest, withoutCrashesNothingIsToldAndNothingWritten)
{
    importer.hasCrash = false;
    EXPECT_EQ(sweep(instant("2026-03-01T00:00:00Z")), CrashReporter::Summary());
    EXPECT_TRUE(captured.empty());
    EXPECT_TRUE(test::namesIn(home.path()).empty());
}

} // namespace
} // namespace vellumor::launchSweepTest
