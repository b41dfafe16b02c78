#include "platform/linux/crash/CrashReportText.h"

#include "diagnostics/crash/CrashReportScanner.h"
#include "support/FakeClock.h"

#include <gtest/gtest.h>

namespace vellumor::crashReportTextTest {
namespace {

using CrashReportText::Known;
using test::instant;

CoreDump dump()
{
    return {instant("2026-03-01T09:30:05Z"),
            "0123456789abcdef0123456789abcdef",
            4242,
            "/home/ann/bin/vellumor",
            "SIGSEGV",
            "Stack trace of thread 4242:\n"
            "#0  0x1 abort (libc.so.6 + 0x10)\n"
            "#1  0x2 _ZN8vellumor6Poller4tickEv (vellumor + 0x20)\n"
            "#2  0x3 n/a (vellumor + 0x30)\n"
            "#3  0x4 n/a (libc.so.6 + 0x40)\n"
            "#4  0x5 n/a (n/a + 0x0)\n"
            "Stack trace of thread 4243:\n"
            "#0  0x6 _ZN1a1bEv (libQt6Core.so.6 + 0x60)\n"};
}

Json parsed(const std::optional<std::string>& report, const char* part)
{
    const auto both = CrashReportScanner::parse(report.value(), "").value();
    return std::string(part) == "header" ? both.header : both.body;
}

TEST(CrashReportText, aCrashIsWrittenAsTwoDocuments)
{
    const auto report = CrashReportText::make(dump(), {instant("2026-03-01T09:29:00.9Z"), "1.0.0"});
    EXPECT_EQ(parsed(report, "header"),
              (Json{{"app_name", "Vellumor"},
                    {"app_version", "1.0.0"},
                    {"incident_id", "0123456789abcdef0123456789abcdef-4242-1772357405000000"},
                    {"timestamp", "2026-03-01 09:30:05.0000 +0000"}}));
    const Json own = {
        {"imageIndex", 0}, {"imageOffset", 0x20}, {"symbol", "vellumor::Poller::tick"}};
    const Json expected = {
        {"captureTime", "2026-03-01 09:30:05.0000 +0000"},
        {"procLaunch", "2026-03-01 09:29:00.0000 +0000"},
        {"pid", 4242},
        {"exception", {{"type", "EXC_BAD_ACCESS"}, {"signal", "SIGSEGV"}}},
        {"faultingThread", 0},
        {"threads",
         {{{"frames",
            {{{"imageIndex", 1}, {"imageOffset", 0x10}, {"symbol", "abort"}},
             own,
             {{"imageIndex", 0}, {"imageOffset", 0x30}, {"symbol", "+0x30"}},
             {{"imageIndex", 1}, {"imageOffset", 0x40}},
             {{"imageIndex", 2}}}}},
          {{"frames",
            Json::array({{{"imageIndex", 3}, {"imageOffset", 0x60}, {"symbol", "_ZN1a1bEv"}}})}}}},
        {"usedImages",
         {{{"name", "Vellumor"}},
          {{"name", "libc.so.6"}},
          {{"name", "unknown"}},
          {{"name", "libQt6Core.so.6"}}}},
    };
    EXPECT_EQ(parsed(report, "body"), expected);
}

TEST(CrashReportText, theDigestFindsThePlaceInIt)
{
    const auto report = CrashReportText::make(dump(), {instant("2026-03-01T09:30:05.9Z"), {}});
    const auto digest =
        CrashDigest::make(parsed(report, "header"), parsed(report, "body"), "").value();
    EXPECT_EQ(digest.area, "poller");
    EXPECT_EQ(digest.exceptionType, "EXC_BAD_ACCESS");
    EXPECT_EQ(digest.crashedAt, dump().crashedAt);
    EXPECT_EQ(digest.crashedVersion, "unknown");
    EXPECT_EQ(digest.uptime, "launch"); // within the second that the journal knows of
}

TEST(CrashReportText, whatIsNotKnownIsLeftOut)
{
    CoreDump bare = dump();
    bare.message.clear();
    const auto report = CrashReportText::make(bare, {});
    EXPECT_FALSE(parsed(report, "header").contains("app_version"));
    EXPECT_FALSE(parsed(report, "body").contains("procLaunch"));
    EXPECT_EQ(parsed(report, "body")["threads"], Json::array());
}

TEST(CrashReportText, eachSignalHasItsException)
{
    struct Row {
        const char* signal;
        const char* type;
    };
    const Row rows[] = {{"SIGSEGV", "EXC_BAD_ACCESS"},
                        {"SIGBUS", "EXC_BAD_ACCESS"},
                        {"SIGABRT", "EXC_CRASH"},
                        {"SIGTRAP", "EXC_BREAKPOINT"},
                        {"SIGILL", "EXC_BAD_INSTRUCTION"},
                        {"SIGFPE", "EXC_ARITHMETIC"},
                        {"SIGQUIT", "other"},
                        {"unknown", "other"}};
    for (const auto& [signal, type] : rows) {
        CoreDump other = dump();
        other.signal = signal;
        const Json body = parsed(CrashReportText::make(other, {}), "body");
        EXPECT_EQ(body["exception"], (Json{{"type", type}, {"signal", signal}}));
    }
}

TEST(CrashReportText, theProgramsFramesAreItsOwnHoweverItsFileIsCalled)
{
    struct Row {
        const char* executable;
        const char* module;
        bool isOwn;
    };
    const Row rows[] = {{"/opt/app/AppRun", "AppRun", true},
                        {"/usr/bin/vellumor (deleted)", "vellumor", true},
                        {"vellumor", "vellumor", true},
                        {"/usr/bin/vellumor", "/usr/bin/vellumor", true},
                        {"/usr/bin/vellumor", "libc.so.6", false},
                        {"/usr/bin/vellumor", "n/a", false},
                        {"", "n/a", false}};
    for (const auto& [executable, module, isOwn] : rows) {
        SCOPED_TRACE(module);
        CoreDump other = dump();
        other.executable = executable;
        other.message =
            std::string("Stack trace of thread 1:\n#0  0x1 main (") + module + " + 0x1)\n";
        const Json body = parsed(CrashReportText::make(other, {}), "body");
        EXPECT_EQ(body["threads"][0]["frames"][0]["imageIndex"] == 0, isOwn);
    }
}

TEST(CrashReportText, noPathOfTheUsersStandsInIt)
{
    CoreDump other = dump();
    other.message += "#1  0x1 f (/home/ann/lib/libx.so + 0x1)\n";
    EXPECT_EQ(CrashReportText::make(other, {})->find("/home/ann"), std::string::npos);
}

TEST(CrashReportText, theFileIsNamedForTheMomentInUtc)
{
    const Instant moment = instant("2026-03-01T09:30:05Z");
    EXPECT_EQ(CrashReportText::fileName(moment, 1), "Vellumor-2026-03-01-093005.ips");
    EXPECT_EQ(CrashReportText::fileName(moment, 2), "Vellumor-2026-03-01-093005-2.ips");
    EXPECT_EQ(CrashReportText::fileName(instant("2026-01-01T01:00:00+05:30"), 1),
              "Vellumor-2025-12-31-193000.ips");
}

TEST(CrashReportText, aReportTellsItsIncident)
{
    EXPECT_EQ(CrashReportText::incidentOf(CrashReportText::make(dump(), {}).value()),
              dump().incidentID());
    for (const char* text : {"", "{}", "{}\n{}", "[]\n", "{\"incident_id\":1}\n{}", "broken\n{}"})
        EXPECT_EQ(CrashReportText::incidentOf(text), std::nullopt) << text;
}

} // namespace
} // namespace vellumor::crashReportTextTest
