#include "diagnostics/crash/SupportReport.h"

#include "base/Version.h"
#include "support/FakeClock.h"

#include <gtest/gtest.h>

#include <regex>

namespace vellumor::supportReportTest {
namespace {

using SupportReport::Environment;

const Environment environment = {"1.0.0", "12.0.0"};

CrashDigest crash()
{
    CrashDigest digest;
    digest.signature = "0a1b2c3d";
    digest.crashedAt = test::instant("2026-03-01T09:30:05.999Z");
    digest.fileName = "Vellumor-2026-03-01-093005.ips";
    return digest;
}

TEST(SupportReport, theSubjectNamesTheCrash)
{
    EXPECT_EQ(SupportReport::subject("1.0.0", std::nullopt), "Vellumor 1.0.0 — problem report");
    EXPECT_EQ(SupportReport::subject("1.0.0", crash()), "Vellumor 1.0.0 — crash report [0a1b2c3d]");
}

TEST(SupportReport, theStatusLineCounts)
{
    EXPECT_EQ(SupportReport::statusLine(0), "Vellumor reported no recent issues.");
    EXPECT_EQ(SupportReport::statusLine(1), "Vellumor stopped working unexpectedly once recently.");
    EXPECT_EQ(SupportReport::statusLine(2),
              "Vellumor stopped working unexpectedly 2 times recently.");
    EXPECT_EQ(SupportReport::statusLine(20),
              "Vellumor stopped working unexpectedly 20 times recently.");
}

TEST(SupportReport, theInstructionsNameTheFile)
{
    EXPECT_EQ(SupportReport::instructions("Vellumor-1.ips"),
              "\"Copy Details\" puts a report template on your clipboard — paste it into your "
              "email, fill in the details, and attach the crash report: Vellumor-1.ips (\"Show "
              "Reports\" will take you to it).");
}

TEST(SupportReport, theFactsHoldVersionsAndTheMostRecentCrash)
{
    EXPECT_EQ(SupportReport::facts(environment, std::nullopt, 0), "app: 1.0.0\nmacOS: 12.0.0");
    const std::string rest = "\n  - ref: 0a1b2c3d\n  - timestamp: 2026-03-01 09:30:05 UTC";
    const std::string begin = "app: 1.0.0\nmacOS: 12.0.0\n";
    EXPECT_EQ(SupportReport::facts(environment, crash(), 0), begin + "crash:" + rest);
    EXPECT_EQ(SupportReport::facts(environment, crash(), 1), begin + "crash:" + rest);
    EXPECT_EQ(SupportReport::facts(environment, crash(), 2),
              begin + "most recent crash (of 2):" + rest);
}

TEST(SupportReport, aCrashWithoutItsMomentSaysUnknown)
{
    CrashDigest digest = crash();
    digest.crashedAt.reset();
    EXPECT_EQ(SupportReport::facts(environment, digest, 1),
              "app: 1.0.0\nmacOS: 12.0.0\ncrash:\n  - ref: 0a1b2c3d\n  - timestamp: unknown");
}

TEST(SupportReport, withoutACrashTheBodyHasTwoBlocks)
{
    EXPECT_EQ(SupportReport::body(environment, std::nullopt, 0),
              "--- Details (please describe the problem here) ---\n\n"
              "- What happened?\n"
              "- What were you doing at the time?\n\n"
              "--- Facts (please keep this section as is) ---\n\n"
              "app: 1.0.0\nmacOS: 12.0.0");
}

TEST(SupportReport, withACrashTheBodyAsksForItsReportFirst)
{
    EXPECT_EQ(
        SupportReport::body(environment, crash(), 2),
        "--- Please attach the crash report file to this email ---\n\n"
        "1. In Vellumor, open Settings → About and click \"Show Reports\".\n"
        "2. Attach the file named Vellumor-2026-03-01-093005.ips to this email.\n\n"
        "The crash report makes the problem much easier to fix. It describes what the app was "
        "doing when it stopped, including file paths from your Mac. Have a look at it before "
        "sending if you would like to (TextEdit can open it). Nothing leaves your Mac unless you "
        "attach it here yourself.\n\n"
        "--- Details (please describe the problem here) ---\n\n"
        "- What happened?\n- What were you doing at the time?\n\n"
        "--- Facts (please keep this section as is) ---\n\n"
        "app: 1.0.0\nmacOS: 12.0.0\nmost recent crash (of 2):\n  - ref: 0a1b2c3d\n"
        "  - timestamp: 2026-03-01 09:30:05 UTC");
}

TEST(SupportReport, aMailLinkIsEncodedByteForByte)
{
    EXPECT_EQ(SupportReport::mailtoLink("", ""), "mailto:?subject=&body=");
    EXPECT_EQ(SupportReport::mailtoLink("AZaz09-._~", "a b&c=d?e#f%g+h\"/:@"),
              "mailto:?subject=AZaz09-._~&body=a%20b%26c%3Dd%3Fe%23f%25g%2Bh%22%2F%3A%40");
    EXPECT_EQ(SupportReport::mailtoLink("—", "x\ny"), "mailto:?subject=%E2%80%94&body=x%0D%0Ay");
}

TEST(SupportReport, theVersionOfTheSystemHasThreeNumbers)
{
    struct Row {
        const char* osRelease;
        const char* kernel;
        const char* version;
    };
    const Row rows[] = {
        {"VERSION_ID=\"12\"\n", "6.1.0-18-amd64", "12.0.0"},
        {"NAME=x\nVERSION_ID=24.04\n", "", "24.04.0"},
        {"VERSION_ID='15.5.1'", "", "15.5.1"},
        {"VERSION_ID=1.2.3.4", "", "1.2.3"},
        {"VERSION_ID=20260301.0.123456", "", "20260301.0.123456"},
        {"VERSION_ID=12.", "", "12.0.0"},
        {"VERSION_ID=12-rc1", "", "12.0.0"},
        {"VERSION_ID=", "6.1.0-18-amd64", "6.1.0"},
        {"VERSION_ID=rolling", "6.12.1-arch1-1", "6.12.1"},
        {"VERSION_ID=.5", "6.6", "6.6.0"},
        {"", "6.1.0-18-amd64", "6.1.0"},
        {"", "custom", "0.0.0"},
        {"", "", "0.0.0"},
    };
    for (const auto& [osRelease, kernel, version] : rows) {
        SCOPED_TRACE(osRelease);
        EXPECT_EQ(SupportReport::osVersion(osRelease, kernel), version);
    }
}

TEST(SupportReport, theEnvironmentIsThatOfThisProgramAndSystem)
{
    const Environment current = Environment::current();
    EXPECT_EQ(current.appVersion, version);
    EXPECT_TRUE(std::regex_match(current.osVersion, std::regex(R"([0-9]+\.[0-9]+\.[0-9]+)")));
    EXPECT_NE(current.osVersion, "0.0.0");
}

} // namespace
} // namespace vellumor::supportReportTest
