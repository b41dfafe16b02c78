#include "app/state/AppState.h"

#include "app/state/AppStateTesting.h"

#include <filesystem>
#include <fstream>

namespace vellumor::appStateTest {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using test::failure;
using test::Gate;
using test::Names;
using Kind = UsageFetchError::Kind;

using AppStateTest = test::AppStateTesting;

TEST_F(AppStateTest, withoutAccountsARoundOnlyTellsThatItWasThere)
{
    waitFor(state.refresh(false));
    EXPECT_EQ(state.lastUpdated(), clock.now());
    EXPECT_EQ(calls(), 0);
    EXPECT_EQ(state.effectiveInterval(), 120);
    EXPECT_EQ(state.slotInterval(clock.now()), 120);
    waitFor(state.refreshNext());
    EXPECT_EQ(calls(), 0);
}

TEST_F(AppStateTest, whoIsPolledAndWhoIsRevived)
{
    const struct {
        TokenStatus status;
        std::optional<Kind> error;
        std::optional<RevivalStatus> revival;
        bool isPolled;
        bool isRevived;
    } rows[] = {
        {TokenStatus::readable, {}, {}, true, false},
        {TokenStatus::readable, Kind::keychain, {}, false, false},
        {TokenStatus::readable, Kind::noService, {}, false, false},
        {TokenStatus::readable, Kind::unauthorized, {}, false, true},
        {TokenStatus::readable, Kind::unauthorized, RevivalStatus::needsSignIn, false, false},
        {TokenStatus::readable, Kind::unauthorized, RevivalStatus::retrying, false, true},
        {TokenStatus::readable, Kind::http, {}, true, false},
        {TokenStatus::readable, Kind::rateLimited, {}, true, false},
        {TokenStatus::readable, Kind::decode, {}, true, false},
        {TokenStatus::readable, Kind::transport, {}, true, false},
        {TokenStatus::readable, Kind::forbidden, {}, false, false}, // blocked
        {TokenStatus::expired, {}, {}, false, true},
        {TokenStatus::expired, Kind::http, RevivalStatus::unavailable, false, true},
        {TokenStatus::expired, {}, RevivalStatus::needsSignIn, false, false},
        {TokenStatus::needsApproval, {}, {}, false, false},
        {TokenStatus::needsApproval, Kind::unauthorized, {}, false, false},
        {TokenStatus::notFound, Kind::unauthorized, {}, false, false},
    };
    add("ada");
    for (const auto& [status, error, revival, isPolled, isRevived] : rows) {
        SCOPED_TRACE(std::string(name(status)) + (error ? failure(*error).description() : ""));
        found.facts[0].tokenStatus = status;
        rescan();
        FetchOutcome outcome;
        if (error)
            outcome.error = failure(*error);
        outcome.revival = revival;
        applyTo("ada", outcome);
        EXPECT_EQ(pollable(), isPolled ? Names{"ada"} : Names());
        EXPECT_EQ(revivable(), isRevived ? Names{"ada"} : Names());
    }
    state.updatePreferences([](Preferences& changed) { changed.tokenRevivalEnabled = false; });
    found.facts[0].tokenStatus = TokenStatus::expired;
    rescan();
    EXPECT_EQ(revivable(), Names());
}

TEST_F(AppStateTest, eachPollableAccountTakesAMinuteAndRevivableOnesShareTheSlots)
{
    addAll({"ada", "ben", "cal"});
    rescan();
    state.setUserInterval(60);
    EXPECT_EQ(state.effectiveInterval(), 180);
    EXPECT_EQ(state.slotInterval(clock.now()), 60);
    add("dot", TokenStatus::expired);
    rescan();
    state.recomputeEffectiveInterval(clock.now());
    EXPECT_EQ(state.effectiveInterval(), 180);
    EXPECT_EQ(state.slotInterval(clock.now()), 45);
    state.setUserInterval(30);
    EXPECT_EQ(state.userInterval(), 60); // what is kept
    EXPECT_EQ(preferences.current().userInterval, 60);
}

TEST_F(AppStateTest, aRoundBeginsOneFetchEveryTwoSeconds)
{
    addAll({"ada", "ben", "cal"});
    rescan();
    Gate slow; // the first never answers meanwhile
    others.gates = {&slow};
    auto round = state.refresh(false);
    settle();
    EXPECT_EQ(calls(), 1);
    EXPECT_TRUE(of("cal").isLoading);
    clock.advance(milliseconds(1999));
    settle();
    EXPECT_EQ(calls(), 1);
    clock.advance(milliseconds(1));
    settle();
    EXPECT_EQ(calls(), 2);
    EXPECT_FALSE(of("ben").isLoading); // applied in the order of ending
    EXPECT_TRUE(of("ada").isLoading);
    clock.advance(seconds(2));
    settle();
    EXPECT_EQ(calls(), 3);
    slow.open();
    waitFor(std::move(round));
    EXPECT_EQ(of("ada").source, UsageSource::endpoint);
    EXPECT_EQ(state.lastUpdated(), clock.now());
}

TEST_F(AppStateTest, aTickFetchesTheOneWhoseTurnItIs)
{
    add("ada");
    add("ben");
    rescan();
    for (const char* const name : {"ada", "ben", "ada"}) {
        others.details.clear();
        waitFor(state.refreshNext());
        ASSERT_FALSE(others.details.empty());
        EXPECT_NE(others.details[0].find(std::string("/.claude-") + name), std::string::npos);
        clock.advance(seconds(60));
    }
}

TEST_F(AppStateTest, byHandEveryAccountIsTriedButABlockedOne)
{
    add("ada");
    add("ben", TokenStatus::notFound);
    add("cal");
    rescan();
    applyTo("cal", failed(Kind::forbidden));
    others.results = {failure(Kind::keychain)};
    waitFor(state.refresh(true));
    EXPECT_EQ(calls(), 2);
    EXPECT_EQ(of("cal").lastError, failure(Kind::forbidden));
}

TEST_F(AppStateTest, anErrorNeverBlanksAReading)
{
    add("ada");
    rescan();
    applyTo("ada", read(UsageSource::endpoint));
    const auto shown = of("ada").usage;
    applyTo("ada", failed(Kind::http));
    EXPECT_EQ(of("ada").usage, shown);
    EXPECT_EQ(of("ada").source, UsageSource::endpoint);
    EXPECT_EQ(of("ada").lastError, failure(Kind::http));
    EXPECT_EQ(of("ada").concludedAbout, found.facts[0].tokenExpiresAt);
    applyTo("ada", read(UsageSource::sharedCache));
    EXPECT_EQ(of("ada").lastError, std::nullopt);
    EXPECT_EQ(of("ada").concludedAbout, std::nullopt);
    FetchOutcome unwell = failed(Kind::unauthorized);
    unwell.revival = RevivalStatus::needsSignIn;
    applyTo("ada", unwell);
    applyTo("ada", read(UsageSource::endpoint));
    EXPECT_EQ(of("ada").revival, std::nullopt);
}

TEST_F(AppStateTest, aForbiddenAccountIsLeftAloneForHalfAnHour)
{
    add("ada");
    rescan();
    applyTo("ada", read(UsageSource::endpoint));
    applyTo("ada", failed(Kind::forbidden));
    EXPECT_EQ(of("ada").blockedUntil, clock.now() + seconds(1800));
    EXPECT_TRUE(of("ada").usage);
    clock.advance(seconds(1799));
    EXPECT_EQ(pollable(), Names());
    clock.advance(seconds(1));
    EXPECT_EQ(pollable(), Names{"ada"});
    applyTo("ada", failed(Kind::forbidden));
    applyTo("ada", read(UsageSource::sharedCache)); // a round that overlapped
    EXPECT_EQ(of("ada").blockedUntil, std::nullopt);
}

TEST_F(AppStateTest, onlyAFreshAnswerEndsAStreakOfAnswersThatCannotBeRead)
{
    add("ada");
    rescan();
    const auto streak = [this] {
        const auto count = state.parseFailStreak().find(id("ada"));
        return count == state.parseFailStreak().end() ? 0 : count->second;
    };
    for (const auto fresh : {UsageSource::cli, UsageSource::endpoint}) {
        SCOPED_TRACE(name(fresh));
        applyTo("ada", failed(Kind::decode));
        applyTo("ada", failed(Kind::decode));
        EXPECT_EQ(streak(), 2);
        for (const auto old :
             {UsageSource::sharedCache, UsageSource::vscodeCache, UsageSource::snapshot})
            applyTo("ada", read(old));
        applyTo("ada", failed(Kind::http));
        EXPECT_EQ(streak(), 2);
        applyTo("ada", read(fresh));
        EXPECT_EQ(streak(), 0);
    }
}

TEST_F(AppStateTest, aHealthyProgramClaimsThePollingAndReadsItsOwnClaim)
{
    add("ada");
    rescan();
    const std::string file = folders.quorle() + "/poller.json";
    std::ofstream(file) << R"({"schemaVersion":1,"source":"ostrelline","intervalSeconds":200,)"
                        << R"("updatedAt":"2026-03-29T12:00:00Z"})";
    others.shared[found.facts[0].configDir] = {test::reading(10, clock.now() - seconds(200)), {}};
    waitFor(state.refreshNext());
    EXPECT_EQ(calls(), 1); // no coverage: the claim is this program's own by now
    EXPECT_NE(test::contentsOf(file).find("\"source\": \"vellumor\""), std::string::npos);
}

TEST_F(AppStateTest, aProgramThatReadsNothingClaimsNothingAndLivesOnTheSibling)
{
    add("ada");
    rescan();
    applyTo("ada", failed(Kind::decode));
    applyTo("ada", failed(Kind::decode));
    const std::string file = folders.quorle() + "/poller.json";
    std::ofstream(file) << R"({"schemaVersion":1,"source":"ostrelline","intervalSeconds":200,)"
                        << R"("updatedAt":"2026-03-29T12:00:00Z"})";
    const std::string before = test::contentsOf(file);
    others.shared[found.facts[0].configDir] = {test::reading(10, clock.now() - seconds(200)), {}};
    waitFor(state.refreshNext());
    EXPECT_EQ(calls(), 0);
    EXPECT_EQ(of("ada").source, UsageSource::sharedCache);
    EXPECT_EQ(test::contentsOf(file), before);
}

TEST_F(AppStateTest, theLogTellsEachTickAndAClaimThatIsWithheld)
{
    add("ada");
    rescan();
    testing::internal::CaptureStderr();
    waitFor(state.refreshNext());
    applyTo("ada", failed(Kind::decode));
    applyTo("ada", failed(Kind::decode));
    waitFor(state.refreshNext());
    const std::string log = testing::internal::GetCapturedStderr();
    const std::string tick = "[stagger] tick → ada (slot 120s, rotation 1)\n";
    const std::string withheld =
        "[poller] heartbeat claim withheld — every pollable account is parse-failing\n";
    EXPECT_TRUE(log.starts_with(tick)) << log;
    EXPECT_EQ(log.find(withheld), log.rfind("[poller]")) << log;
    EXPECT_LT(log.find(withheld), log.rfind(tick)) << log;
}

TEST_F(AppStateTest, theMarkOfARunningRevivalDoesNotOutliveIt)
{
    add("ada", TokenStatus::expired);
    rescan();
    others.attempt = TokenReviver::Attempt::throttled;
    state.markReviving(id("ada"));
    EXPECT_EQ(of("ada").revival, RevivalStatus::reviving);
    waitFor(state.refresh(false));
    EXPECT_EQ(of("ada").revival, RevivalStatus::retrying);
}

TEST_F(AppStateTest, anOutcomeOfAnAccountThatHasGoneIsTakenAllTheSame)
{
    applyTo("nobody", failed(Kind::http));
    const auto* known = state.state("");
    ASSERT_NE(known, nullptr);
    EXPECT_EQ(known->lastError, failure(Kind::http));
    EXPECT_EQ(known->concludedAbout, std::nullopt);
}

TEST_F(AppStateTest, anAccountThatIsHiddenDuringItsFetchIsLeftToItsEnd)
{
    addAll({"ada", "ben"});
    rescan();
    Gate slow;
    others.gates = {&slow};
    auto tick = state.refreshNext();
    settle();
    ASSERT_EQ(calls(), 1);
    const std::string hidden = id("ada");
    state.remove(account("ada"));
    EXPECT_EQ(state.state(hidden), nullptr);
    slow.open();
    waitFor(std::move(tick));
    ASSERT_NE(state.state(hidden), nullptr);
    EXPECT_EQ(state.state(hidden)->usage, std::get<Usage>(others.results[0]));
    EXPECT_FALSE(state.state(hidden)->isLoading);
    EXPECT_EQ(namesOf(state.accounts()), Names{"ben"});
    rescan();
    EXPECT_EQ(state.state(hidden), nullptr);
}

TEST_F(AppStateTest, aRefusalIsShownOnceAndItsWaitForAsLongAsItLasts)
{
    add("ada");
    rescan();
    others.results = {failure(Kind::rateLimited)};
    waitFor(state.refreshNext());
    EXPECT_EQ(of("ada").lastError, failure(Kind::rateLimited));
    const auto until = clock.now() + seconds(120);
    EXPECT_EQ(of("ada").backoffUntil, until);
    clock.advance(milliseconds(119'999));
    waitFor(state.refreshNext());
    EXPECT_EQ(calls(), 1);
    EXPECT_EQ(of("ada").lastError, std::nullopt);
    EXPECT_EQ(of("ada").backoffUntil, until);
    clock.advance(milliseconds(1));
    others.results = {test::reading(40, clock.now())};
    waitFor(state.refreshNext());
    EXPECT_EQ(calls(), 2);
    EXPECT_EQ(of("ada").backoffUntil, std::nullopt);
}

TEST_F(AppStateTest, anAccountWhoseCredentialCannotBeReadWaitsForAnotherTokenOrTheUser)
{
    for (const auto kind : {Kind::keychain, Kind::noService}) {
        SCOPED_TRACE(failure(kind).description());
        found.facts.clear();
        add("ada");
        rescan();
        others.results = {failure(kind)};
        waitFor(state.refreshNext());
        rescan(); // the same token
        EXPECT_EQ(pollable(), Names());
        EXPECT_EQ(revivable(), Names());
        *found.facts[0].tokenExpiresAt += seconds(1);
        rescan();
        EXPECT_EQ(pollable(), Names{"ada"});

        waitFor(state.refreshNext());
        EXPECT_EQ(pollable(), Names());
        others.results = {test::reading(40, clock.now())};
        waitFor(state.refresh(true));
        EXPECT_EQ(pollable(), Names{"ada"});
        clock.advance(std::chrono::hours(1));
    }
}

TEST_F(AppStateTest, ofTwoRoundsThatOverlapTheFirstThatEndsClearsTheMark)
{
    add("ada");
    rescan();
    Gate first;
    Gate second;
    others.gates = {&first, &second};
    auto tick = state.refreshNext();
    settle();
    auto byHand = state.refresh(true);
    settle();
    ASSERT_EQ(calls(), 2);
    EXPECT_TRUE(of("ada").isLoading);
    second.open();
    waitFor(std::move(byHand));
    EXPECT_FALSE(of("ada").isLoading);
    first.open();
    waitFor(std::move(tick));
    EXPECT_FALSE(of("ada").isLoading);
    EXPECT_EQ(of("ada").usage, std::get<Usage>(others.results[0]));
}

TEST_F(AppStateTest, aRoundKeepsTheIntervalThatItBeganWith)
{
    addAll({"ada", "ben"});
    rescan();
    others.results = {test::reading(40, clock.now()), failure(Kind::rateLimited)};
    auto round = state.refresh(false);
    settle();
    ASSERT_EQ(calls(), 1);
    state.setUserInterval(600);
    waitFor(std::move(round));
    ASSERT_EQ(others.entries.size(), 1U);
    EXPECT_EQ(others.entries[0].effectiveIntervalSeconds, 120);
    EXPECT_EQ(state.effectiveInterval(), 600);
}

TEST_F(AppStateTest, aRoundKeepsTheCoverageThatItBeganWith)
{
    addAll({"ada", "ben"});
    rescan();
    for (const char* const name : {"ada", "ben"}) { // so that this program claims nothing itself
        applyTo(name, failed(Kind::decode));
        applyTo(name, failed(Kind::decode));
        others.shared[dirOf(name)] = {test::reading(10, clock.now() - seconds(200)), {}};
    }
    const std::string file = folders.quorle() + "/poller.json";
    std::ofstream(file) << R"({"schemaVersion":1,"source":"ostrelline","intervalSeconds":200,)"
                        << R"("updatedAt":"2026-03-29T12:00:00Z"})";
    auto round = state.refresh(false);
    settle();
    EXPECT_EQ(of("ada").source, UsageSource::sharedCache);
    ASSERT_EQ(of("ben").source, std::nullopt); // its turn comes two seconds later
    state.setUserInterval(600);
    std::filesystem::remove(file);
    waitFor(std::move(round));
    EXPECT_EQ(of("ben").source, UsageSource::sharedCache);
    EXPECT_EQ(calls(), 0);
    waitFor(state.refresh(false));
    EXPECT_EQ(calls(), 2);
}

} // namespace
} // namespace vellumor::appStateTest
