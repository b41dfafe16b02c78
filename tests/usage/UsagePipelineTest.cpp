#include "usage/UsagePipeline.h"

#include "usage/FakeCollaborators.h"

#include <QCoroCore>

#include <gtest/gtest.h>

#include <limits>

namespace vellumor::usagePipelineTest {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using test::FakeClock;
using test::FakeCollaborators;
using test::Gate;
using Kind = UsageFetchError::Kind;

const Instant now = test::instant("2026-03-29T12:00:00Z");
const std::string work = "/home/ada/.claude-work";
const std::string other = "/home/ada/.claude-other";

struct UsagePipelineTest : testing::Test {
    FakeCollaborators others;
    FakeClock clock{now};
    UsagePipeline pipeline{others, clock};

    FetchRequest request(const std::string& dir = work)
    {
        FetchRequest request;
        request.account.displayName = dir == work ? "Work" : "Other";
        request.account.configDir = dir;
        request.account.tokenStatus = TokenStatus::readable;
        request.now = clock.now();
        request.effectiveInterval = 300;
        return request;
    }
    FetchOutcome fetch(FetchRequest asked)
    {
        return QCoro::waitFor(pipeline.fetch(std::move(asked)));
    }
    FetchOutcome fetch() { return fetch(request()); }
    void share(Instant at, std::optional<Instant> backoffUntil = std::nullopt)
    {
        others.shared[work] = {test::reading(10, at), backoffUntil};
    }
    // How long the refusal of now makes the account wait.
    double waitAfterRefusal()
    {
        others.results = {test::failure(Kind::rateLimited)};
        const auto until = fetch().backoffUntil.value();
        const double wait = secondsBetween(clock.now(), until);
        clock.advance(milliseconds(std::llround(wait * 1000)));
        return wait;
    }
    [[nodiscard]] std::ptrdiff_t callsOf(const std::string& name) const
    {
        return std::count(others.calls.begin(), others.calls.end(), name);
    }
};

TEST(UsagePipeline, aSharedReadingIsFreshUpToTheCoverageButNeverForLessThanNinetySeconds)
{
    const struct {
        double age;
        std::optional<double> coverage;
        bool isFresh;
    } rows[] = {
        {0, {}, true},          {89.999, {}, true},  {90, {}, false},      {100, 600.0, true},
        {599.999, 600.0, true}, {600, 600.0, false}, {89.999, 30.0, true}, {90, 30.0, false},
        {-59, {}, true},        {-60, {}, true},     {-60.001, {}, false}, {-61, 600.0, false},
    };
    for (const auto& [age, coverage, isFresh] : rows) {
        const Instant at = now - milliseconds(std::llround(age * 1000));
        EXPECT_EQ(UsagePipeline::isFresh(at, now, coverage), isFresh) << age;
    }
}

TEST_F(UsagePipelineTest, aSharedReadingThirtySecondsOldIsReturnedWithoutACall)
{
    share(now - seconds(30));
    const FetchOutcome outcome = fetch();
    EXPECT_EQ(outcome.source, UsageSource::sharedCache);
    EXPECT_EQ(outcome.usage, test::reading(10, now - seconds(30)));
    EXPECT_EQ(callsOf("fetchUsage"), 0);
    EXPECT_EQ(others.calls, (std::vector<std::string>{"readShared", "readVscode"}));
}

TEST_F(UsagePipelineTest, aManualFetchCallsDespiteAFreshReading)
{
    share(now - seconds(30));
    others.results = {test::reading(40, now)};
    auto asked = request();
    asked.manual = true;
    EXPECT_EQ(fetch(asked).source, UsageSource::endpoint);
}

TEST_F(UsagePipelineTest, theFreshReadingIsGivenAsItIsAndNotMergedWithANewerStatusCache)
{
    share(now - seconds(30));
    others.vscode = VscodeStatusCache::Snapshot{now - seconds(10), 30, 31, {}, {}};
    EXPECT_EQ(fetch().usage, test::reading(10, now - seconds(30)));
}

TEST_F(UsagePipelineTest, aNewerBaseWithoutWindowsKeepsItsSource)
{
    others.online = false;
    share(now - seconds(100));
    others.shared[work].usage.windows.clear();
    others.vscode = VscodeStatusCache::Snapshot{now - seconds(200), 30, 31, {}, {}};
    const FetchOutcome outcome = fetch();
    EXPECT_EQ(outcome.source, UsageSource::sharedCache);
    EXPECT_EQ(outcome.usage.value().windows.size(), 2U); // the status cache's, all the same
    EXPECT_EQ(outcome.usage->fetchedAt, now - seconds(200));
}

TEST_F(UsagePipelineTest, aFreshReadingOfAnOfflineMachineIsNotOffline)
{
    others.online = false;
    share(now - seconds(30));
    const FetchOutcome fresh = fetch();
    EXPECT_FALSE(fresh.isOffline);
    EXPECT_EQ(fresh.error, std::nullopt);
    share(now - seconds(100));
    EXPECT_TRUE(fetch().isOffline);
}

TEST_F(UsagePipelineTest, anExpiredTokenIsRevivedDespiteAFreshReading)
{
    share(now - seconds(10));
    others.results = {test::reading(40, now)};
    auto asked = request();
    asked.account.tokenStatus = TokenStatus::expired;
    EXPECT_EQ(fetch(asked).source, UsageSource::cli);
    EXPECT_EQ(callsOf("revive"), 1);
}

TEST_F(UsagePipelineTest, refusalsInARowDoubleTheWaitUpToFifteenMinutes)
{
    for (const double wait : {300.0, 600.0, 900.0, 900.0})
        EXPECT_EQ(waitAfterRefusal(), wait);
}

TEST_F(UsagePipelineTest, theFirstWaitIsCutToFifteenMinutesToo)
{
    others.results = {test::failure(Kind::rateLimited)};
    auto asked = request();
    asked.effectiveInterval = 1800;
    EXPECT_EQ(fetch(asked).backoffUntil, now + seconds(900));
}

TEST_F(UsagePipelineTest, theSecondWaitIsTwiceTheFirstWhateverTheIntervalIsThen)
{
    others.results = {test::failure(Kind::rateLimited)};
    auto asked = request();
    asked.effectiveInterval = 60;
    EXPECT_EQ(fetch(asked).backoffUntil, now + seconds(60));
    clock.advance(seconds(60));
    EXPECT_EQ(fetch().backoffUntil, now + seconds(60 + 120)); // and not 300
}

TEST_F(UsagePipelineTest, whatTheServerAsksForIsNotedAndDoesNotSetTheWait)
{
    for (const double asked : {3600.0, 0.0, -5.0, std::numeric_limits<double>::infinity()}) {
        UsagePipeline fresh(others, clock);
        others.results = {test::failure(Kind::rateLimited, asked)};
        const FetchOutcome outcome = QCoro::waitFor(fresh.fetch(request()));
        EXPECT_EQ(outcome.backoffUntil, now + seconds(300));
        EXPECT_EQ(others.entries.back().retryAfterSeconds, asked);
        EXPECT_EQ(others.entries.back().backoffSeconds, 300);
    }
}

TEST_F(UsagePipelineTest, anAnswerBringsTheWaitBackToTheInterval)
{
    EXPECT_EQ(waitAfterRefusal(), 300);
    EXPECT_EQ(waitAfterRefusal(), 600);
    others.results = {test::reading(40, now)};
    EXPECT_EQ(fetch().error, std::nullopt);
    EXPECT_EQ(waitAfterRefusal(), 300);
}

TEST_F(UsagePipelineTest, otherFailuresNeitherGrowNorResetTheWait)
{
    EXPECT_EQ(waitAfterRefusal(), 300);
    for (const Kind kind : {Kind::http, Kind::transport, Kind::decode, Kind::forbidden}) {
        others.results = {test::failure(kind)};
        const FetchOutcome outcome = fetch();
        EXPECT_EQ(outcome.error, test::failure(kind));
        EXPECT_EQ(outcome.backoffUntil, std::nullopt);
    }
    EXPECT_EQ(waitAfterRefusal(), 600);
}

TEST_F(UsagePipelineTest, aManualFetchDuringAWaitGivesTheLocalReadingAndCallsNobody)
{
    share(now - seconds(30), now + seconds(100));
    auto asked = request();
    asked.manual = true;
    const FetchOutcome outcome = fetch(asked);
    EXPECT_EQ(outcome.usage, test::reading(10, now - seconds(30)));
    EXPECT_EQ(outcome.backoffUntil, now + seconds(100));
    EXPECT_EQ(callsOf("fetchUsage"), 0);
}

TEST_F(UsagePipelineTest, theLaterOfMemoryAndFileHolds)
{
    others.results = {test::failure(Kind::rateLimited)};
    fetch(); // until 300
    for (const int inFile : {200, 400}) {
        share(now - seconds(600), now + seconds(inFile));
        EXPECT_EQ(fetch().backoffUntil, now + seconds(std::max(inFile, 300)));
    }
}

TEST_F(UsagePipelineTest, aWaitEndsAtItsMoment)
{
    others.results = {test::reading(40, now)};
    share(now - seconds(600), now + milliseconds(1));
    EXPECT_EQ(fetch().backoffUntil, now + milliseconds(1));
    share(now - seconds(600), now);
    EXPECT_EQ(fetch().source, UsageSource::endpoint);
}

TEST_F(UsagePipelineTest, aRestartInTheMiddleOfAWaitCallsNobodyUntilItEnds)
{
    others.results = {test::failure(Kind::rateLimited)};
    const auto until = fetch().backoffUntil;
    share(now - seconds(600), until);
    UsagePipeline restarted(others, clock);
    others.calls.clear();
    for (int minute = 0; minute < 5; ++minute) {
        EXPECT_EQ(QCoro::waitFor(restarted.fetch(request())).backoffUntil, until);
        clock.advance(seconds(60));
    }
    EXPECT_EQ(callsOf("fetchUsage"), 0);
    // The next refusal begins at the interval again, for memory is gone.
    EXPECT_EQ(QCoro::waitFor(restarted.fetch(request())).backoffUntil, clock.now() + seconds(300));
    EXPECT_EQ(callsOf("fetchUsage"), 1);
}

TEST_F(UsagePipelineTest, anAccountThatWaitsHoldsUpNoOther)
{
    others.results = {test::failure(Kind::rateLimited), test::reading(40, now)};
    fetch();
    EXPECT_EQ(fetch(request(other)).source, UsageSource::endpoint);
}

TEST_F(UsagePipelineTest, theEntryOfARefusalTellsTheCallBeforeByTheClockOfThatCall)
{
    others.results = {test::reading(40, now), test::failure(Kind::rateLimited, 12.5)};
    auto first = request(other);
    clock.advance(seconds(7)); // the call goes out later than the fetch began
    fetch(first);
    clock.advance(seconds(20));
    auto second = request();
    clock.advance(seconds(5));
    second.manual = true;
    fetch(second);
    ASSERT_EQ(others.entries.size(), 1U);
    EXPECT_EQ(others.entries[0],
              (RateLimitEntry{now + seconds(27), work, "manual", 20.0, other, 300, 300, 12.5}));
}

TEST_F(UsagePipelineTest, theFirstCallOfAllHasNoneBefore)
{
    others.results = {test::failure(Kind::rateLimited)};
    fetch();
    ASSERT_EQ(others.entries.size(), 1U);
    EXPECT_EQ(others.entries[0],
              (RateLimitEntry{now, work, "auto", {}, {}, 300, 300, std::nullopt}));
}

TEST_F(UsagePipelineTest, aRefusalBehindARevivalTellsTheRetryAndMayLieBeforeTheCallBefore)
{
    others.results = {test::failure(Kind::unauthorized), test::failure(Kind::rateLimited)};
    auto asked = request();
    clock.advance(seconds(3));
    const FetchOutcome outcome = fetch(asked);
    EXPECT_EQ(outcome.error, test::failure(Kind::rateLimited));
    EXPECT_EQ(outcome.revival, RevivalStatus::retrying);
    ASSERT_EQ(others.entries.size(), 1U);
    EXPECT_EQ(others.entries[0], (RateLimitEntry{now, work, "revival", -3.0, work, 300, 300, {}}));
}

TEST_F(UsagePipelineTest, theRetryGoesAheadUnlessBothDatesAreThereAndEqual)
{
    const struct {
        std::optional<Instant> before;
        std::optional<Instant> after;
        std::ptrdiff_t calls;
    } rows[] = {
        {now, now, 0}, {now, now + milliseconds(1), 1}, {{}, now, 1}, {now, {}, 1}, {{}, {}, 1}};
    others.results = {test::reading(40, now)};
    for (const auto& [before, after, calls] : rows) {
        others.calls.clear();
        others.expiryAfterRevival = after;
        auto asked = request();
        asked.account.tokenStatus = TokenStatus::expired;
        asked.account.tokenExpiresAt = before;
        fetch(asked);
        EXPECT_EQ(callsOf("fetchUsage"), calls);
    }
}

TEST_F(UsagePipelineTest, anExpiredTokenIsRevivedDespiteAWait)
{
    share(now - seconds(600), now + seconds(100));
    others.results = {test::reading(40, now)};
    auto asked = request();
    asked.account.tokenStatus = TokenStatus::expired;
    EXPECT_EQ(fetch(asked).revival, RevivalStatus::succeeded);
}

TEST_F(UsagePipelineTest, anAnswerEndsTheWaitThatIsRememberedToo)
{
    others.results = {test::failure(Kind::rateLimited), test::reading(40, now),
                      test::reading(50, now)};
    fetch();
    clock.advance(seconds(10));
    auto revived = request();
    revived.account.tokenStatus = TokenStatus::expired;
    EXPECT_EQ(fetch(revived).revival, RevivalStatus::succeeded);
    others.shared.clear();
    const FetchOutcome outcome = fetch();
    EXPECT_EQ(outcome.source, UsageSource::endpoint);
    EXPECT_EQ(outcome.backoffUntil, std::nullopt);
}

TEST_F(UsagePipelineTest, aFailureOfARetryIsToldAsUnauthorized)
{
    for (const Kind kind : {Kind::http, Kind::transport, Kind::decode, Kind::keychain}) {
        others.results = {test::failure(kind)};
        auto asked = request();
        asked.account.tokenStatus = TokenStatus::expired;
        const FetchOutcome outcome = fetch(asked);
        EXPECT_EQ(outcome.error, test::failure(Kind::unauthorized));
        EXPECT_EQ(outcome.revival, RevivalStatus::retrying);
    }
}

TEST_F(UsagePipelineTest, settingsAndNetworkAreReadOnceAFetch)
{
    others.results = {test::failure(Kind::unauthorized), test::reading(40, now)};
    fetch();
    EXPECT_EQ(others.onlineReads, 1);
    EXPECT_EQ(others.localOnlyReads, 1);
}

TEST_F(UsagePipelineTest, aSettingThatChangesDuringAFetchCountsFromTheNextOn)
{
    Gate gate;
    others.gates = {&gate};
    others.results = {test::failure(Kind::unauthorized), test::reading(40, now)};
    auto task = pipeline.fetch(request());
    others.localOnly = true;
    gate.open();
    EXPECT_EQ(QCoro::waitFor(std::move(task)).source, UsageSource::cli);
    EXPECT_EQ(fetch().source, std::nullopt);
}

TEST_F(UsagePipelineTest, aSlowAccountHoldsUpNoOther)
{
    Gate slow;
    others.gates = {&slow};
    others.results = {test::reading(40, now), test::reading(50, now)};
    auto task = pipeline.fetch(request());
    EXPECT_EQ(fetch(request(other)).usage, test::reading(50, now));
    EXPECT_FALSE(task.isReady());
    slow.open();
    EXPECT_EQ(QCoro::waitFor(std::move(task)).usage, test::reading(40, now));
}

TEST_F(UsagePipelineTest, refusalsOfFetchesInFlightDoubleTheWaitExactlyOnceEach)
{
    Gate gates[3];
    others.gates = {&gates[0], &gates[1], &gates[2]};
    others.results = {test::failure(Kind::rateLimited)};
    auto first = pipeline.fetch(request());
    auto second = pipeline.fetch(request());
    auto third = pipeline.fetch(request(other));
    gates[2].open();
    gates[0].open();
    gates[1].open();
    EXPECT_EQ(QCoro::waitFor(std::move(first)).backoffUntil, now + seconds(300));
    EXPECT_EQ(QCoro::waitFor(std::move(second)).backoffUntil, now + seconds(600));
    EXPECT_EQ(QCoro::waitFor(std::move(third)).backoffUntil, now + seconds(300));
    EXPECT_EQ(others.backoffs,
              (std::vector<Instant>{now + seconds(300), now + seconds(300), now + seconds(600)}));
}

TEST_F(UsagePipelineTest, theCoverageThatIsAskedForDecidesWhatIsFresh)
{
    share(now - seconds(100));
    others.results = {test::reading(40, now)};
    auto asked = request();
    asked.coverageWindow = 600;
    EXPECT_EQ(fetch(asked).source, UsageSource::sharedCache);
    asked.coverageWindow = 30;
    EXPECT_EQ(fetch(asked).source, UsageSource::endpoint);
}

// The moment at which the fetch began counts, however long it has taken by then.
TEST_F(UsagePipelineTest, everythingIsWrittenForTheAccountAndTheMomentOfTheFetch)
{
    others.results = {test::failure(Kind::unauthorized), test::reading(40, now + seconds(2))};
    auto asked = request();
    clock.advance(seconds(5));
    fetch(asked);
    const std::string began = " " + work + " 2026-03-29T12:00:00.000Z";
    const std::string read = " " + work + " 2026-03-29T12:00:02.000Z";
    EXPECT_EQ(
        others.details,
        (std::vector<std::string>{
            "revive" + began, "expiry " + work + " 1970-01-01T00:00:00.000Z", "shared" + read,
            "snapshot" + read, "history of 2026-03-29T12:00:02.000Z" + began, "anchors" + read}));
}

TEST_F(UsagePipelineTest, everyCallIsForTheAccountThatIsAskedFor)
{
    others.results = {test::failure(Kind::unauthorized), test::reading(40, now)};
    auto asked = request(other);
    asked.account.resolvedService = "example-service";
    fetch(asked);
    EXPECT_EQ(others.vscodeDirs, std::vector<std::string>{other});
    EXPECT_EQ(others.asked, (std::vector<Account>{asked.account, asked.account}));
}

TEST_F(UsagePipelineTest, anAnswerEndsTheWaitBeforeAnythingIsWritten)
{
    EXPECT_EQ(waitAfterRefusal(), 300);
    Gate gate;
    others.writeGate = &gate;
    others.results = {test::reading(40, now), test::failure(Kind::rateLimited)};
    auto writing = pipeline.fetch(request());
    EXPECT_EQ(fetch().backoffUntil, clock.now() + seconds(300)); // and not 600
    gate.open();
    EXPECT_EQ(QCoro::waitFor(std::move(writing)).error, std::nullopt);
}

TEST_F(UsagePipelineTest, theStartOfARevivalIsToldJustBeforeItAndOnlyThen)
{
    others.results = {test::failure(Kind::unauthorized), test::reading(40, now)};
    auto asked = request();
    asked.onRevivalStart = [this] { others.calls.emplace_back("told"); };
    fetch(asked);
    const auto told = std::find(others.calls.begin(), others.calls.end(), "told");
    ASSERT_NE(told, others.calls.end());
    EXPECT_EQ(*(told + 1), "revive");
    others.calls.clear();
    others.revivalEnabled = false;
    others.results = {test::failure(Kind::unauthorized)};
    EXPECT_EQ(fetch(asked).revival, RevivalStatus::disabled);
    EXPECT_EQ(callsOf("told"), 0);
}

TEST_F(UsagePipelineTest, theLogTellsEachDecisionByTheAccountsName)
{
    others.results = {test::failure(Kind::unauthorized), test::failure(Kind::unauthorized)};
    others.expiryAfterRevival = now;
    auto asked = request();
    asked.account.tokenExpiresAt = now;
    testing::internal::CaptureStderr();
    fetch(asked);
    asked.account.tokenStatus = TokenStatus::expired;
    fetch(asked);
    asked.account.tokenStatus = TokenStatus::signedOut;
    fetch(asked);
    const std::string unchanged =
        "[pipeline] Work: /usage ran clean but the credential is unchanged — refresh didn't happen "
        "(transient) → retrying\n";
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "[pipeline] Work: endpoint fetch (auto)\n"
              "[pipeline] Work: endpoint 401 (expired since discovery) → revival safety net\n" +
                  unchanged +
                  "[pipeline] Work: token known-expired → revival path (no endpoint call)\n" +
                  unchanged + "[pipeline] Work: signed out → sign-in needed (no endpoint call)\n");
}

} // namespace
} // namespace vellumor::usagePipelineTest
