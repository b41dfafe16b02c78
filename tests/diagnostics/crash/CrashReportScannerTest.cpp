#include "diagnostics/crash/CrashReportScanner.h"

#include "diagnostics/crash/Reports.h"
#include "support/FakeClock.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

namespace vellumor::crashReportScannerTest {
namespace {

using test::bodyWith;
using test::instant;
using test::reportText;

std::string reportAt(const char* captureTime)
{
    Json body = bodyWith({});
    body["captureTime"] = captureTime;
    return reportText(test::header("one"), body);
}

std::vector<std::string> namesOf(const std::vector<CrashDigest>& digests)
{
    std::vector<std::string> names;
    for (const CrashDigest& digest : digests)
        names.push_back(digest.fileName);
    return names;
}

using Texts = std::vector<std::string>;

TEST(CrashReportScanner, aReportIsItsFirstLineAndTheRest)
{
    const auto report = CrashReportScanner::parse("{\"a\":1}\n{\n  \"b\": 2\n}\n", "/x/y.ips");
    ASSERT_TRUE(report);
    EXPECT_EQ(report->url, "/x/y.ips");
    EXPECT_EQ(report->header, (Json{{"a", 1}}));
    EXPECT_EQ(report->body, (Json{{"b", 2}}));
}

TEST(CrashReportScanner, whatIsNotTwoObjectsIsNoReport)
{
    const std::string deep = "{\"x\":" + std::string(64, '[') + std::string(64, ']') + "}";
    const std::string texts[] = {"",
                                 "\n",
                                 "{}",
                                 "{}{}",
                                 "{}\n",
                                 "\n{}",
                                 "{}\n[]",
                                 "[]\n{}",
                                 "{}\n1",
                                 "null\n{}",
                                 "{}\n{} {}",
                                 "{\"a\":\n1}\n{}",
                                 "{}\n{\"a\":\"\xff\"}",
                                 "{}\n" + deep,
                                 deep + "\n{}",
                                 std::string("{}\n{\0}", 6)};
    for (const std::string& text : texts)
        EXPECT_FALSE(CrashReportScanner::parse(text, "")) << text;
    EXPECT_TRUE(CrashReportScanner::parse("{}\n{}", ""));
    EXPECT_TRUE(CrashReportScanner::parse("{}\r\n{}", "")); // white space is allowed around JSON
}

TEST(CrashReportScanner, onlyThisProgramsReportsCount)
{
    const test::TempFolder folder;
    for (const char* name : {"Vellumor-2.ips", "Vellumor-1.ips", "Vellumor-.ips", "Vellumor.ips",
                             "vellumor-1.ips", "Vellumor-1.IPS", "Vellumor-1.ips.tmp",
                             "Other-1.ips", ".Vellumor-1.ips", "Vellumor-1.txt", "Vellumor-ips"})
        folder.put(name, "");
    EXPECT_EQ(CrashReportScanner::ownReports(folder.path()),
              (Texts{folder.file("Vellumor-.ips"), folder.file("Vellumor-1.ips"),
                     folder.file("Vellumor-2.ips")}));
}

TEST(CrashReportScanner, aFolderThatIsNotThereHasNoReports)
{
    const test::TempFolder folder;
    EXPECT_TRUE(CrashReportScanner::ownReports(folder.file("nowhere")).empty());
    EXPECT_TRUE(CrashReportScanner::ownReports(folder.put("file", "")).empty());
    EXPECT_TRUE(CrashReportScanner::digests(folder.file("nowhere"), 20).empty());
}

TEST(CrashReportScanner, theLastReportsByNameAreReadAndBrokenOnesPassedOver)
{
    const test::TempFolder folder;
    for (const char* name : {"Vellumor-1.ips", "Vellumor-2.ips", "Vellumor-4.ips"})
        folder.put(name, reportText(test::header(name), bodyWith({})));
    folder.put("Vellumor-3.ips", "broken");
    const auto names = [&](std::size_t limit) {
        return namesOf(CrashReportScanner::digests(folder.path(), limit));
    };
    EXPECT_EQ(names(20), (Texts{"Vellumor-4.ips", "Vellumor-2.ips", "Vellumor-1.ips"}));
    EXPECT_EQ(names(3), (Texts{"Vellumor-4.ips", "Vellumor-2.ips"})); // the broken one counts
    EXPECT_EQ(names(1), Texts{"Vellumor-4.ips"});
    EXPECT_EQ(names(0), Texts{});
}

TEST(CrashReportScanner, whatIsNoPlainFileIsPassedOver)
{
    const test::TempFolder folder;
    folder.makeFolder("Vellumor-1.ips");
    ASSERT_EQ(::mkfifo(folder.file("Vellumor-2.ips").c_str(), 0600), 0); // would hold a reader
    ASSERT_EQ(::symlink("nowhere", folder.file("Vellumor-3.ips").c_str()), 0);
    EXPECT_EQ(CrashReportScanner::ownReports(folder.path()).size(), 3U);
    EXPECT_TRUE(CrashReportScanner::digests(folder.path(), 20).empty());
}

TEST(CrashReportScanner, recentIsWithinTheDaysAndTellsWhen)
{
    const test::TempFolder folder;
    folder.put("Vellumor-1.ips", reportAt("2026-03-01 12:00:00.0000 +0000"));
    folder.put("Vellumor-2.ips", reportAt("2026-03-01 11:59:59.9999 +0000"));
    folder.put("Vellumor-3.ips", reportAt("broken"));
    folder.put("Vellumor-4.ips", reportAt("2030-01-01 00:00:00.0000 +0000")); // a clock was wrong
    EXPECT_EQ(namesOf(CrashReportScanner::recentDigests(7, instant("2026-03-08T12:00:00Z"),
                                                        folder.path())),
              (Texts{"Vellumor-4.ips", "Vellumor-1.ips"}));
}

TEST(CrashReportScanner, aLookAtRecentCrashesGoesBackTwentyReports)
{
    const test::TempFolder folder;
    for (int i = 10; i < 35; ++i)
        folder.put("Vellumor-" + std::to_string(i) + ".ips",
                   reportAt("2026-03-01 12:00:00.0000 +0000"));
    const auto found =
        CrashReportScanner::recentDigests(7, instant("2026-03-01T12:00:00Z"), folder.path());
    ASSERT_EQ(found.size(), 20U);
    EXPECT_EQ(found.back().fileName, "Vellumor-15.ips");
}

} // namespace
} // namespace vellumor::crashReportScannerTest
