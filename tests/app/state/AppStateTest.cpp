#include "app/state/AppState.h"

#include "app/state/AppWorld.h"
#include "store/AccountFiles.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace vellumor {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using test::AppWorld;
using test::failure;
using test::Gate;
using Kind = UsageFetchError::Kind;
using Names = std::vector<std::string>;

struct AppStateTest : testing::Test, AppWorld {
    [[nodiscard]] static Names namesOf(const std::vector<Account>& accounts)
    {
        Names names;
        for (const Account& account : accounts)
            names.push_back(account.displayName);
        return names;
    }
    [[nodiscard]] Names pollable() const { return namesOf(state.pollableAccounts(clock.now())); }
    [[nodiscard]] Names revivable() const { return namesOf(state.revivableAccounts(clock.now())); }
    void applyTo(const std::string& name, const FetchOutcome& outcome)
    {
        state.apply(outcome, id(name));
    }
    static FetchOutcome failed(Kind kind)
    {
        FetchOutcome outcome;
        outcome.error = failure(kind);
        return outcome;
    }
    [[nodiscard]] FetchOutcome read(UsageSource source) const
    {
        FetchOutcome outcome;
        outcome.usage = test::reading(40, clock.now());
        outcome.source = source;
        return outcome;
    }
};

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
    for (const char* const name : {"ada", "ben", "cal"})
        add(name);
    add("dot", TokenStatus::expired);
    rescan();
    state.setUserInterval(60);
    EXPECT_EQ(state.effectiveInterval(), 180);
    EXPECT_EQ(state.slotInterval(clock.now()), 45);
    state.setUserInterval(30);
    EXPECT_EQ(state.userInterval(), 60); // what is kept
    EXPECT_EQ(preferences.current().userInterval, 60);
}

TEST_F(AppStateTest, aRoundBeginsOneFetchEveryTwoSeconds)
{
    for (const char* const name : {"ada", "ben", "cal"})
        add(name);
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
    applyTo("ada", failed(Kind::decode));
    applyTo("ada", failed(Kind::decode));
    EXPECT_EQ(streak(), 2);
    applyTo("ada", read(UsageSource::sharedCache));
    applyTo("ada", read(UsageSource::vscodeCache));
    applyTo("ada", failed(Kind::http));
    EXPECT_EQ(streak(), 2);
    applyTo("ada", read(UsageSource::cli));
    EXPECT_EQ(streak(), 0);
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

TEST_F(AppStateTest, aScanThatFailsChangesNothing)
{
    add("ada");
    rescan();
    const auto before = state.accounts();
    found = {{}, true};
    rescan();
    EXPECT_EQ(state.accounts(), before);
}

TEST_F(AppStateTest, aSignedOutAccountWaitsForASignIn)
{
    add("ada", TokenStatus::signedOut);
    rescan();
    EXPECT_EQ(of("ada").lastError, failure(Kind::unauthorized));
    EXPECT_EQ(of("ada").revival, RevivalStatus::needsSignIn);
    EXPECT_EQ(revivable(), Names());
    found.facts[0].tokenStatus = TokenStatus::readable;
    *found.facts[0].tokenExpiresAt += seconds(1);
    rescan();
    EXPECT_EQ(of("ada").lastError, std::nullopt);
    EXPECT_EQ(pollable(), Names{"ada"});
}

TEST_F(AppStateTest, aConclusionGoesWithTheTokenThatItWasAbout)
{
    add("ada");
    rescan();
    applyTo("ada", failed(Kind::keychain));
    rescan();
    EXPECT_EQ(pollable(), Names());
    *found.facts[0].tokenExpiresAt += seconds(1);
    rescan();
    EXPECT_EQ(pollable(), Names{"ada"});
}

TEST_F(AppStateTest, aReadingOfTheRunBeforeIsShownAtTheStart)
{
    add("ada");
    add("ben");
    UsageSnapshotStore snapshots(files, folders.vellumor() + "/usage-snapshots.json");
    for (const auto& facts : found.facts)
        snapshots.save(test::reading(7, clock.now()), facts.configDir);
    rescan();
    applyTo("ben", read(UsageSource::endpoint));
    waitFor(state.seedFromSnapshots());
    EXPECT_EQ(of("ada").source, UsageSource::snapshot);
    EXPECT_EQ(of("ada").usage.value().windows[0].percent, 7);
    EXPECT_EQ(of("ben").source, UsageSource::endpoint);
}

TEST_F(AppStateTest, whatAHiddenAccountHadIsThereWhenItComesBack)
{
    add("ada");
    add("ben");
    rescan();
    UsageHistoryStore history(files, folders.vellumor() + "/history");
    for (const Account& account : state.accounts())
        history.append(test::reading(1, clock.now()), account.configDir, clock.now());
    const Account hidden = state.accounts()[0];
    state.remove(hidden);
    rescan();
    EXPECT_TRUE(state.isRemoved(hidden.configDir));
    EXPECT_EQ(namesOf(state.accounts()), Names{"ben"});
    waitFor(state.restore(hidden.configDir));
    EXPECT_FALSE(state.isRemoved(hidden.configDir));
    EXPECT_EQ(state.accounts()[0].id, hidden.id);
    ASSERT_TRUE(state.historyByDir().at(hidden.configDir));
    EXPECT_EQ(state.historyByDir().at(hidden.configDir)->size(), 1U);
}

TEST_F(AppStateTest, whatBelongsToNobodyGoesUnlessAScanFindsNobodyAtAll)
{
    add("ada");
    rescan();
    const std::string folder = folders.vellumor() + "/history";
    UsageHistoryStore(files, folder).append(test::reading(1, clock.now()), "/gone", clock.now());
    const std::string stray = AccountFiles::path(folder, "/gone");
    const auto ada = std::move(found.facts);
    found.facts.clear();
    rescan();
    EXPECT_TRUE(std::filesystem::exists(stray));
    found.facts = ada;
    rescan();
    EXPECT_FALSE(std::filesystem::exists(stray));
}

TEST_F(AppStateTest, aHistoryThatHasNotChangedIsNotReadAgain)
{
    add("ada");
    rescan();
    const std::string dir = found.facts[0].configDir;
    UsageHistoryStore history(files, folders.vellumor() + "/history");
    history.append(test::reading(1, clock.now()), dir, clock.now());
    waitFor(state.refreshNext());
    const auto first = state.historyByDir().at(dir);
    EXPECT_EQ(first->size(), 1U);
    waitFor(state.refreshNext());
    EXPECT_EQ(state.historyByDir().at(dir), first);
    history.append(test::reading(2, clock.now() + seconds(1)), dir, clock.now());
    waitFor(state.refreshNext());
    EXPECT_EQ(state.historyByDir().at(dir)->size(), 2U);
}

TEST_F(AppStateTest, aNameIsTrimmedAndABlankOneIsNone)
{
    add("ada");
    rescan();
    state.rename(state.accounts()[0], "  ");
    EXPECT_EQ(state.accounts()[0].displayName, "ada");
    state.rename(state.accounts()[0], "  Work \n");
    EXPECT_EQ(state.accounts()[0].displayName, "Work");
}

TEST_F(AppStateTest, hidingFromTheListTakesEffectWithoutAScan)
{
    add("ada");
    rescan();
    const int before = scans;
    state.setTracked(id("ada"), false);
    EXPECT_EQ(pollable(), Names());
    EXPECT_EQ(scans, before);
    waitFor(state.setServiceOverride(id("ada"), "Mine"));
    EXPECT_EQ(scans, before + 1);
}

TEST_F(AppStateTest, observersAreToldOnceATurnAndAfterTheChange)
{
    std::vector<double> seen;
    state.observe([&] { seen.push_back(state.userInterval()); });
    settle();
    seen.clear();
    state.setUserInterval(300);
    state.setUserInterval(600);
    EXPECT_TRUE(seen.empty());
    settle();
    EXPECT_EQ(seen, std::vector<double>{600});
    settle();
    EXPECT_EQ(seen.size(), 1U);
    state.updatePreferences([](Preferences& changed) { changed.menuBarDualBars = true; });
    settle();
    EXPECT_EQ(seen.size(), 2U);
}

TEST_F(AppStateTest, anOutcomeOfAnAccountThatHasGoneIsTakenAllTheSame)
{
    applyTo("nobody", failed(Kind::http));
    const auto* known = state.state("");
    ASSERT_NE(known, nullptr);
    EXPECT_EQ(known->lastError, failure(Kind::http));
    EXPECT_EQ(known->concludedAbout, std::nullopt);
}

} // namespace
} // namespace vellumor
