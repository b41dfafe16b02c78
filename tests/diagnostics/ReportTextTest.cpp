#include "diagnostics/ReportText.h"

#include "support/FakeClock.h"

#include <gtest/gtest.h>

namespace vellumor::reportTextTest {
namespace {

using test::instant;

const Instant now = instant("2026-03-01T12:00:00Z");
const Redaction redaction("/home/ann", {});

TEST(ReportText, theBannerNamesTheVersion)
{
    EXPECT_EQ(ReportText::banner(), "Vellumor 1.0.0 — diagnostics\n\n");
}

TEST(ReportText, sectionsWithNothingToTellSaySo)
{
    EXPECT_EQ(ReportText::crashes({}, "/home/ann/reports", redaction),
              "crash  : no crash reports on disk (~/reports)\n");
    EXPECT_EQ(ReportText::telemetry(std::nullopt, redaction), "Telemetry: not written yet\n");
    EXPECT_EQ(ReportText::presence(std::nullopt, std::nullopt, redaction),
              "Presence:  vellumor=no · ostrelline installed=no\n");
    EXPECT_EQ(ReportText::caches({}, now, redaction), "    cache    : shared (none yet)\n"
                                                      "    vscode   : (no status cache)\n"
                                                      "    anchors  : (none learned yet)\n");
    EXPECT_EQ(ReportText::rateLimitLog({}, redaction),
              "429 log:  empty — no 429 ever observed on this install\n");
}

TEST(ReportText, eachCrashThatCanBeReadIsToldWithWhatBecameOfIt)
{
    CrashDigest digest;
    digest.signature = "0a1b2c3d";
    digest.area = "poller";
    digest.crashedVersion = "1.0.0 of ann@example.org";
    digest.uptime = "short";
    KnownCrashes known{3, {{digest, false}}};
    digest.crashedVersion = "unknown";
    known.crashes.push_back({digest, true});
    EXPECT_EQ(ReportText::crashes(known, "/home/ann/reports", redaction),
              "crash  : 3 report(s) on disk\n"
              "    unreported sig=0a1b2c3d area=poller v=1.0.0 of … uptime=short\n"
              "    already reported sig=0a1b2c3d area=poller v=unknown uptime=short\n");
}

TEST(ReportText, telemetryTellsItsLine)
{
    EXPECT_EQ(ReportText::telemetry("diagnostics=on since 2026", redaction),
              "Telemetry: diagnostics=on since 2026\n");
}

TEST(ReportText, theTitleOfAnAccountTellsWhyItIsOutOfSight)
{
    EXPECT_EQ(ReportText::title("/a", ""), "/a");
    EXPECT_EQ(ReportText::title("/a", "not tracked"), "/a · not tracked");
}

TEST(ReportText, theSharedCacheTellsItsAgeItsWindowsAndARunningWait)
{
    const auto line = [](std::chrono::milliseconds age, std::optional<Instant> backoffUntil) {
        AccountCaches caches;
        caches.shared = UsageCacheFile();
        caches.shared->fetchedAt = now - age;
        caches.shared->windows.resize(2);
        caches.shared->backoffUntil = backoffUntil;
        const std::string text = ReportText::caches(caches, now, redaction);
        return text.substr(0, text.find('\n'));
    };
    using namespace std::chrono_literals;
    EXPECT_EQ(line(89999ms, {}), "    cache    : shared fresh (2 window(s))");
    EXPECT_EQ(line(90s, {}), "    cache    : shared stale (2 window(s))");
    EXPECT_EQ(line(90s, now), "    cache    : shared stale (2 window(s))"); // it has passed
    EXPECT_EQ(line(90s, now + 1s),
              "    cache    : shared stale (2 window(s)) backoff until 2026-03-01T12:00:01Z");
}

TEST(ReportText, theStatusCacheOfVsCodeTellsBothLimits)
{
    AccountCaches caches;
    caches.vscode = {now - std::chrono::minutes(5), 12.5, 30, now + std::chrono::hours(2), {}};
    EXPECT_EQ(ReportText::caches(caches, now, redaction),
              "    cache    : shared (none yet)\n"
              "    vscode   : 5h 12.5% resets in 2h 0m · 7d 30.0% no reset time · updated 5m ago\n"
              "    anchors  : (none learned yet)\n");
}

TEST(ReportText, anAnchorTellsItsNextResetUnlessItsStepsAreBroken)
{
    AccountCaches caches;
    caches.anchors["weekly_all"] = {instant("2026-02-20T10:00:00Z"), false};
    caches.anchors["seven_day_opus"] = {instant("2026-02-21T10:00:00Z"), true};
    EXPECT_EQ(ReportText::caches(caches, now, redaction),
              "    cache    : shared (none yet)\n"
              "    vscode   : (no status cache)\n"
              "    anchor   : seven_day_opus — last=2026-02-21T10:00:00Z"
              "  OFF-CADENCE (estimates suppressed)\n"
              "    anchor   : weekly_all 2026-03-06T10:00:00Z last=2026-02-20T10:00:00Z\n");
}

TEST(ReportText, presenceTellsVersionAndFirstDay)
{
    const PresenceMarker::Presence sibling = {"ostrelline", "2.1", "2026-01-02T03:04:05.000Z", ""};
    EXPECT_EQ(ReportText::presence(std::nullopt, sibling, redaction),
              "Presence:  vellumor=no · ostrelline installed=yes (v2.1, since "
              "2026-01-02T03:04:05.000Z)\n");
}

TEST(ReportText, onboardingTellsWhatIsDoneAndWhatFollows)
{
    EXPECT_EQ(ReportText::onboarding({1, 0}, true),
              "Onboarding: completedVersion=0 current=1 shouldShow=true\n");
    EXPECT_EQ(ReportText::onboarding({1, 1}, false),
              "Onboarding: completedVersion=1 current=1 shouldShow=false\n");
}

TEST(ReportText, revivalTellsSwitchAndPaths)
{
    Preferences preferences;
    EXPECT_EQ(ReportText::revival(preferences, std::nullopt, redaction),
              "CLI revival: enabled · manual path=(none) · claude=not found\n");
    preferences.tokenRevivalEnabled = false;
    preferences.claudeBinaryPath = "/home/ann/bin/claude";
    EXPECT_EQ(ReportText::revival(preferences, "/usr/bin/claude", redaction),
              "CLI revival: disabled · manual path=~/bin/claude · claude=/usr/bin/claude\n");
}

TEST(ReportText, countsAreTold)
{
    EXPECT_EQ(ReportText::keychain(3), "Keychain: 3 Claude credential service(s) enumerated.\n");
    EXPECT_EQ(ReportText::home(std::vector<std::string>{"a", "b"}), "Home: 2 config dir(s)\n");
    EXPECT_EQ(ReportText::home(std::nullopt), "Home: home enumeration FAILED\n");
    EXPECT_EQ(ReportText::discovery(2), "Discovery: 2 account(s) from scan\n");
    EXPECT_EQ(ReportText::unmatchedHeading(1),
              "\nUnmatched credential item(s): 1 — enumerated but not selected for any discovered "
              "account (an orphan, or a superseded name):\n");
}

TEST(ReportText, ofAnIdentityOnlyItsPresenceIsTold)
{
    DiscoveredFacts facts;
    facts.email = "ann@example.org";
    facts.org = "Acme";
    facts.plan = "Max";
    facts.resolvedService = "Claude Code-credentials";
    facts.tokenStatus = TokenStatus::readable;
    facts.tokenExpiresAt = now + std::chrono::hours(3);
    EXPECT_EQ(ReportText::account("/home/ann/.claude", facts, now, redaction),
              "\n~/.claude\n"
              "    identity : email=yes org=yes displayName=—\n"
              "    service  : Claude Code-credentials\n"
              "    plan     : Max\n"
              "    token    : readable · ends in 3h 0m\n");
}

std::string tokenLine(TokenStatus status, std::optional<Instant> expiresAt)
{
    DiscoveredFacts facts;
    facts.tokenStatus = status;
    facts.tokenExpiresAt = expiresAt;
    const std::string text = ReportText::account("x", facts, now, redaction);
    return text.substr(text.find("    token"));
}

TEST(ReportText, everyTokenStateIsTold)
{
    EXPECT_EQ(tokenLine(TokenStatus::expired, now - std::chrono::hours(2)),
              "    token    : expired · ended 2h ago\n");
    EXPECT_EQ(
        tokenLine(TokenStatus::signedOut, Instant()),
        "    token    : signedOut · cleared by Claude Code (empty access token, expiresAt 0) — "
        "sign in to this account\n");
    EXPECT_EQ(tokenLine(TokenStatus::needsApproval, std::nullopt),
              "    token    : needsApproval\n");
    EXPECT_EQ(tokenLine(TokenStatus::notFound, std::nullopt), "    token    : notFound\n");
}

TEST(ReportText, anAccountWithoutServiceOrPlanSaysSo)
{
    const std::string text = ReportText::account("x", {}, now, redaction);
    EXPECT_NE(text.find("    service  : unresolved\n"), std::string::npos);
    EXPECT_NE(text.find("    plan     : —\n"), std::string::npos);
}

TEST(ReportText, usageTellsWhyItWasNotAskedOrFailed)
{
    EXPECT_EQ(ReportText::usageSkipped(TokenStatus::expired),
              "    usage    : (skipped — token expired)\n");
    const UsageFetchError unauthorized = {UsageFetchError::Kind::unauthorized, "", {}, 0};
    EXPECT_EQ(ReportText::usage(unauthorized, {}, now, redaction),
              "    usage    : FETCH FAILED — unauthorized (401) — token expired/invalid\n");
}

TEST(ReportText, usageTellsEachWindowAndTheCredits)
{
    Usage usage;
    usage.windows = {
        {"session", "session", 62.04, "normal", now + std::chrono::minutes(134), true, {}},
        {"weekly_all", "weekly", 100.0, "normal", std::nullopt, false, {}}};
    usage.extraUsage = ExtraUsage{true, 1250.0, "EUR", {}, 5000.0, {}, false, {}, {}};
    EXPECT_EQ(
        ReportText::usage(usage, {}, now, redaction),
        "    usage    :  62.0%  resets in 2h 14m    Session · projection Session "
        "limit in 1h 41m\n"
        "    usage    : 100.0%  no reset time       Weekly · projection none\n"
        "    extra    : display=normal enabled=true used=1250.00 limit=5000.00 util=— "
        "userDisabled=false spendLimitReached=— everEnabled=—\n"
        "    project  : stateless=Session limit in 1h 41m (no recency coverage or no change)\n");
}

TEST(ReportText, theForecastIsToldWithoutAndWithTheHistory)
{
    // Half of the session is over; in its last hour nothing was used any more.
    Usage usage;
    usage.windows = {
        {"session", "session", 60.0, "normal", now + std::chrono::minutes(150), true, {}}};
    UsageSamples history;
    for (int i = 12; i >= 0; --i)
        history.push_back({now - std::chrono::minutes(5 * i), {{"session", 60.0}}});
    const auto lastLine = [&](const UsageSamples& samples) {
        const std::string text = ReportText::usage(usage, samples, now, redaction);
        return text.substr(text.rfind("    project"));
    };
    EXPECT_TRUE(ReportText::usage(usage, history, now, redaction)
                    .starts_with("    usage    :  60.0%  resets in 2h 30m    Session · "
                                 "projection Session ~95% by reset\n"));
    EXPECT_EQ(lastLine({}), "    project  : stateless=Session limit in 1h 40m"
                            " (no recency coverage or no change)\n");
    EXPECT_EQ(lastLine(history), "    project  : stateless=Session limit in 1h 40m"
                                 " · with history Session ~95% by reset\n");
}

TEST(ReportText, aReadingWithoutWindowsSaysSo)
{
    EXPECT_EQ(ReportText::usage(Usage(), {}, now, redaction),
              "    usage    : (no windows returned)\n"
              "    project  : stateless=none (no recency coverage or no change)\n");
}

TEST(ReportText, staggerTellsTheEffectiveIntervalAndTheSlot)
{
    EXPECT_EQ(
        ReportText::stagger(120, 3),
        "\nStagger:  ~2 min chosen, 3 pollable → effective 3 min · one request per 1 min slot · "
        "designed for up to 2 accounts\n");
    EXPECT_EQ(
        ReportText::stagger(60, 0),
        "\nStagger:  ~1 min chosen, 0 pollable → effective 1 min · one request per 1 min slot · "
        "designed for up to 1 account\n");
}

TEST(ReportText, the429LogCountsItsLines)
{
    EXPECT_EQ(ReportText::rateLimitLog({"one"}, redaction), "429 log:  last 1 entry\n    one\n");
    EXPECT_EQ(ReportText::rateLimitLog({"one", "two"}, redaction),
              "429 log:  last 2 entries\n    one\n    two\n");
}

} // namespace
} // namespace vellumor::reportTextTest
