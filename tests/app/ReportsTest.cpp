#include "app/Reports.h"

#include "support/FakeClock.h"
#include "support/FakeProcessRunner.h"
#include "support/TempFolder.h"
#include "telemetry/sending/FakePoster.h"

#include <QCoroCore>

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

namespace vellumor::reportsTest {
namespace {

// Out of an AppImage the file that runs, and crashes, is the one that was unpacked from it.
TEST(Reports, theCrashesAreThoseOfTheFileThatRunsAlsoOutOfAnAppImage)
{
    const test::TempFolder home;
    test::FakeClock clock;
    const FileStore files;
    Worker worker;
    test::FakePoster poster;
    test::FakeProcessRunner processes;
    Reports reports({{"APPIMAGE", "/home/a/Vellumor.AppImage"}},
                    {home.path(), home.file("data"), home.file("config")},
                    {clock, files, worker, runAtOnce, poster, processes, [] { return true; }, {}});
    QCoro::waitFor(reports.sweepCrashes());
    ASSERT_EQ(processes.requests.size(), 1U);
    const auto& asked = processes.requests[0].arguments;
    const std::string own = std::filesystem::read_symlink("/proc/self/exe").filename().string();
    const std::string processName = own.substr(0, 15); // the kernel keeps no more of it
    EXPECT_EQ(std::count(asked.begin(), asked.end(), "COREDUMP_COMM=" + processName), 1)
        << testing::PrintToString(asked);
}

} // namespace
} // namespace vellumor::reportsTest
