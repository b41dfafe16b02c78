#include "diagnostics/crash/CrashDigest.h"

#include "base/Sha256.h"
#include "diagnostics/crash/Reports.h"
#include "support/FakeClock.h"

#include <gtest/gtest.h>

namespace vellumor::crashDigestTest {
namespace {

using test::bodyWith;
using test::frame;
using test::instant;

CrashDigest digestOf(const Json& body, const Json& header = test::header("one"))
{
    return CrashDigest::make(header, body, "Vellumor-1.ips").value();
}

std::string signatureOf(const std::string& text)
{
    return Sha256::first8Hex(text);
}

TEST(CrashDigest, aReportGivesAllOfIt)
{
    const CrashDigest digest = digestOf(bodyWith({frame("Poller.tick()")}));
    const CrashDigest expected = {
        "one",   signatureOf("Poller.tick()"),    "EXC_BAD_ACCESS", "SIGSEGV", "poller", "1.0.0",
        "short", instant("2026-03-01T09:30:00Z"), "Vellumor-1.ips"};
    EXPECT_EQ(digest, expected);
}

TEST(CrashDigest, closuresAreNormalizedAlike)
{
    EXPECT_EQ(CrashDigest::normalize("closure #3 in foo"), "closure #N in foo");
    EXPECT_EQ(CrashDigest::normalize("closure #12 in foo"), "closure #N in foo");
}

TEST(CrashDigest, aFrameIsNormalized)
{
    struct Row {
        const char* frame;
        const char* normalized;
    };
    const Row rows[] = {
        {"", ""},
        {"foo", "foo"},
        {"partial apply for specialized foo", "foo"},
        {"specialized partial apply for foo", "foo"},
        {"thunk for specialized thunk for foo", "foo"},
        {"reabstraction thunk helper for foo", "foo"},
        {"specialized specialized foo", "foo"},
        {"foo specialized bar", "foo specialized bar"},
        {" specialized foo", "specialized foo"}, // a blank before it: it does not begin with it
        {"specialized  foo ", "foo"},
        {"specialized  specialized foo", "specialized foo"},
        {"specialized", "specialized"},
        {"specialized ", ""},
        {"Specialized foo", "Specialized foo"},
        {"#1#22 # #x 3#4", "#N#N # #x 3#N"},
        {"##1", "##N"},
        {"foo#", "foo#"},
        {"lambda#1}::operator()", "lambda#N}::operator()"},
    };
    for (const auto& [text, normalized] : rows) {
        SCOPED_TRACE(text);
        EXPECT_EQ(CrashDigest::normalize(text), normalized);
    }
}

TEST(CrashDigest, theFirstFiveFramesOfTheProgramMakeTheSignature)
{
    const std::vector<Json> six = {frame("a"), frame("read", 1),       frame("b"), frame("c"),
                                   frame("d"), frame("specialized e"), frame("f")};
    EXPECT_EQ(digestOf(bodyWith(six)).signature, signatureOf("a|b|c|d|e"));
    EXPECT_EQ(digestOf(bodyWith({frame("a"), frame("b")})).signature, signatureOf("a|b"));
}

TEST(CrashDigest, aFrameWithoutSymbolCountsAsUnsymbolicated)
{
    Json bare = frame("x");
    bare.erase("symbol");
    EXPECT_EQ(digestOf(bodyWith({bare, frame("b")})).signature, signatureOf("<unsymbolicated>|b"));
}

TEST(CrashDigest, withoutOwnFramesTheTopImageMakesTheSignature)
{
    const CrashDigest library = digestOf(bodyWith({frame("Poller", 1), frame("abort", 1)}));
    EXPECT_EQ(library.signature, signatureOf("no-own-frames|libc.so.6"));
    EXPECT_EQ(library.area, "other");
    const CrashDigest none = digestOf(bodyWith({}));
    EXPECT_EQ(none.signature, signatureOf("no-own-frames|unknown"));
    EXPECT_EQ(none.area, "other");
}

TEST(CrashDigest, exceptionAndSignalAreOfFixedWords)
{
    const auto withException = [](const Json& exception) {
        Json body = bodyWith({});
        body["exception"] = exception;
        const CrashDigest digest = digestOf(body);
        return digest.exceptionType + " " + digest.signal;
    };
    for (const char* type : {"EXC_BAD_ACCESS", "EXC_BREAKPOINT", "EXC_CRASH", "EXC_BAD_INSTRUCTION",
                             "EXC_ARITHMETIC", "EXC_GUARD", "EXC_RESOURCE", "other"})
        EXPECT_EQ(withException({{"type", type}}), std::string(type) + " other");
    for (const char* signal :
         {"SIGSEGV", "SIGABRT", "SIGTRAP", "SIGBUS", "SIGILL", "SIGKILL", "other"})
        EXPECT_EQ(withException({{"signal", signal}}), std::string("other ") + signal);
    EXPECT_EQ(withException({{"type", "EXC_NEW"}, {"signal", "SIGFPE"}}), "other other");
    EXPECT_EQ(withException({{"type", "exc_crash"}, {"signal", 11}}), "other other");
    EXPECT_EQ(withException(Json::object()), "other other");
}

TEST(CrashDigest, theAreaIsThatOfTheFirstFrameWithAKnownWord)
{
    struct Row {
        const char* symbol;
        const char* area;
    };
    const Row rows[] = {
        {"Poller", "poller"},
        {"PollBudget", "poller"},
        {"ClaimGate", "poller"},
        {"Stagger", "poller"},
        {"UsageClient", "usage"},
        {"UsagePipeline", "usage"},
        {"Projection", "usage"},
        {"RawUsage", "usage"},
        {"UsageSample", "usage"},
        {"Keychain", "keychain"},
        {"TokenReviver", "keychain"},
        {"SharedCache", "store"},
        {"SharedAccountsStore", "store"},
        {"AccountStore", "store"},
        {"HistoryStore", "store"},
        {"FileStore", "store"},
        {"VscodeStatusCache", "store"},
        {"IdentityFile", "store"},
        {"PresenceMarker", "store"},
        {"AccountDiscovery", "store"},
        {"Notifications", "notifications"},
        {"TelemetryStore", "telemetry"},
        {"SelfTest", "selftest"},
        {"X3Stress", "selftest"},
        {"PopoverView", "ui"},
        {"AboutTab", "ui"},
        {"AppDelegate", "ui"},
        {"AppState", "ui"},
        {"MenuBarLabel", "ui"},
        {"poller", "other"},
        {"main", "other"},
        {"UsageHistoryStore", "usage"}, // the first row counts
        {"TelemetryStagger", "poller"},
    };
    for (const auto& [symbol, area] : rows) {
        SCOPED_TRACE(symbol);
        EXPECT_EQ(digestOf(bodyWith({frame("main"), frame(symbol), frame("Poller")})).area,
                  std::string(area) == "other" ? "poller" : area);
        EXPECT_EQ(digestOf(bodyWith({frame(symbol)})).area, area);
    }
}

TEST(CrashDigest, theIncidentIsThatOfTheHeaderElseOfTheBody)
{
    Json body = bodyWith({});
    body["incident"] = "two";
    EXPECT_EQ(digestOf(body).incidentID, "one");
    EXPECT_EQ(digestOf(body, Json::object()).incidentID, "two");
    EXPECT_EQ(digestOf(body, {{"incident_id", 1}}).incidentID, "two");
    EXPECT_EQ(digestOf(bodyWith({}), Json::object()).incidentID, "");
}

TEST(CrashDigest, aHeaderWithoutVersionGivesUnknown)
{
    EXPECT_EQ(digestOf(bodyWith({}), Json::object()).crashedVersion, "unknown");
    EXPECT_EQ(digestOf(bodyWith({}), {{"app_version", 2}}).crashedVersion, "unknown");
}

std::string uptimeFor(const char* launch, const char* capture)
{
    Json body = bodyWith({});
    body["procLaunch"] = launch;
    body["captureTime"] = capture;
    return digestOf(body).uptime;
}

TEST(CrashDigest, theUptimeIsToldCoarsely)
{
    struct Row {
        const char* launch;
        const char* capture;
        const char* uptime;
    };
    const Row rows[] = {
        {"2026-03-01 09:30:00.0000 +0000", "2026-03-01 09:30:00.0000 +0000", "launch"},
        {"2026-03-01 09:30:00.0000 +0000", "2026-03-01 09:30:09.9000 +0000", "launch"},
        {"2026-03-01 09:30:00.0001 +0000", "2026-03-01 09:30:10.0000 +0000", "launch"},
        {"2026-03-01 09:30:00.0000 +0000", "2026-03-01 09:30:10.0000 +0000", "short"},
        {"2026-03-01 09:30:00.0001 +0000", "2026-03-01 09:40:00.0000 +0000", "short"},
        {"2026-03-01 09:30:00.0000 +0000", "2026-03-01 09:40:00.0000 +0000", "long"},
        {"2026-03-01 09:30:00.0000 +0000", "2026-03-01 10:30:05.0000 +0100", "launch"},
        {"2026-02-28 23:59:59.0000 -0530", "2026-03-01 05:30:00.0000 +0000", "launch"},
        {"2026-03-01 09:30:00.0001 +0000", "2026-03-01 09:30:00.0000 +0000", "unknown"},
    };
    for (const auto& [launch, capture, uptime] : rows) {
        SCOPED_TRACE(capture);
        EXPECT_EQ(uptimeFor(launch, capture), uptime);
    }
}

} // namespace
} // namespace vellumor::crashDigestTest
