#include "platform/linux/crash/ReportFolder.h"

#include "support/FakeClock.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace vellumor::reportFolderTest {
namespace {

using Texts = std::vector<std::string>;

CoreDump dumpOf(std::int64_t pid)
{
    CoreDump dump;
    dump.crashedAt = test::instant("2026-03-01T09:30:05Z");
    dump.bootId = "0123456789abcdef0123456789abcdef";
    dump.pid = pid;
    return dump;
}

struct ReportFolderTest : testing::Test {
    test::TempFolder home;
    FileStore files;
    std::string path = home.file("reports");
    ReportFolder folder{files, path};
};

TEST_F(ReportFolderTest, aReportIsWrittenForTheUserAlone)
{
    EXPECT_TRUE(folder.write(dumpOf(1), {}));
    EXPECT_EQ(test::namesIn(path), Texts{"Vellumor-2026-03-01-093005.ips"});
    EXPECT_EQ(test::modeOf(path), 0700U);
    EXPECT_EQ(test::modeOf(path + "/Vellumor-2026-03-01-093005.ips"), 0600U);
}

TEST_F(ReportFolderTest, aCrashHasOneReport)
{
    EXPECT_EQ(folder.withoutReport({dumpOf(1)}).size(), 1U);
    EXPECT_FALSE(std::filesystem::exists(path));
    EXPECT_TRUE(folder.write(dumpOf(1), {}));
    EXPECT_FALSE(folder.write(dumpOf(1), {}));
    EXPECT_TRUE(folder.withoutReport({dumpOf(1)}).empty());
    EXPECT_EQ(test::namesIn(path).size(), 1U);
}

TEST_F(ReportFolderTest, crashesOfOneSecondAreNumbered)
{
    for (const std::int64_t pid : {1, 2, 3})
        EXPECT_TRUE(folder.write(dumpOf(pid), {}));
    EXPECT_EQ(test::namesIn(path),
              (Texts{"Vellumor-2026-03-01-093005-2.ips", "Vellumor-2026-03-01-093005-3.ips",
                     "Vellumor-2026-03-01-093005.ips"}));
    EXPECT_TRUE(folder.withoutReport({dumpOf(1), dumpOf(2), dumpOf(3)}).empty());
    EXPECT_EQ(folder.withoutReport({dumpOf(4)}), std::vector<CoreDump>{dumpOf(4)});
}

TEST_F(ReportFolderTest, aCrashLoopFillsNoDisk)
{
    int written = 0;
    for (std::int64_t pid = 0; pid < 40; ++pid)
        written += folder.write(dumpOf(pid), {}) ? 1 : 0;
    EXPECT_EQ(written, 20); // within one second
    EXPECT_TRUE(folder.withoutReport({dumpOf(39)}).empty());
}

TEST_F(ReportFolderTest, whatStandsInTheWayIsLeftAlone)
{
    home.put("reports/Vellumor-2026-03-01-093005.ips", "somebody's");
    home.makeFolder("reports/Vellumor-2026-03-01-093005-2.ips");
    EXPECT_TRUE(folder.write(dumpOf(1), {}));
    EXPECT_EQ(test::contentsOf(path + "/Vellumor-2026-03-01-093005.ips"), "somebody's");
    EXPECT_NE(test::contentsOf(path + "/Vellumor-2026-03-01-093005-3.ips"), "");
    EXPECT_FALSE(folder.write(dumpOf(1), {}));
}

TEST_F(ReportFolderTest, aFolderThatCannotBeMadeMakesNoReport)
{
    home.put("reports", "");
    EXPECT_FALSE(folder.write(dumpOf(1), {}));
}

TEST_F(ReportFolderTest, onlyTheLastFiftyReportsAreKept)
{
    for (int i = 100; i < 153; ++i)
        home.put("reports/Vellumor-" + std::to_string(i) + ".ips", "");
    home.put("reports/Vellumor-099.txt", "");
    home.put("reports/Other-099.ips", "");
    folder.trim();
    const Texts names = test::namesIn(path);
    EXPECT_EQ(names.size(), 52U);
    EXPECT_EQ(names[0], "Other-099.ips");
    EXPECT_EQ(names[1], "Vellumor-099.txt");
    EXPECT_EQ(names[2], "Vellumor-103.ips");
    folder.trim();
    EXPECT_EQ(test::namesIn(path).size(), 52U);
}

TEST_F(ReportFolderTest, aFolderThatIsNotThereIsNotMade)
{
    folder.trim();
    EXPECT_TRUE(test::namesIn(home.path()).empty());
}

} // namespace
} // namespace vellumor::reportFolderTest
