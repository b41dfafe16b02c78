// What of the readings and outcomes reaches the user as notifications.

#include "app/state/AppStateTesting.h"

namespace vellumor::appStateNotificationsTest {
namespace {

using std::chrono::hours;
using std::chrono::seconds;
using test::Names;

struct AppStateNotificationsTest : test::AppStateTesting {
    AppStateNotificationsTest()
    {
        state.updatePreferences([](Preferences& all) { all.notificationsEnabled = true; });
        add("ada");
        rescan();
    }

    // A reading with a session of so many percent that ends in two hours.
    void apply(double percent, UsageSource source = UsageSource::endpoint)
    {
        FetchOutcome outcome = read(source);
        LimitWindow& session = outcome.usage->windows[0];
        session.kind = session.group = "session";
        session.percent = percent;
        session.resetsAt = ends;
        applyTo("ada", outcome);
        clock.advance(seconds(60));
    }
    // A reading without a session, so many seconds after that has ended.
    void applyWithoutSession(seconds late)
    {
        clock.advance(std::chrono::floor<std::chrono::milliseconds>(ends + late - clock.now()));
        FetchOutcome outcome = read(UsageSource::endpoint);
        outcome.usage->windows.clear();
        applyTo("ada", outcome);
    }
    void turnOn(bool Preferences::*alert)
    {
        state.updatePreferences([alert](Preferences& all) { all.*alert = true; });
    }
    const Instant ends = clock.now() + hours(2);
};

TEST_F(AppStateNotificationsTest, aLimitThatIsReachedIsToldOnce)
{
    apply(80);
    EXPECT_EQ(delivered, Names());
    apply(93);
    apply(94);
    EXPECT_EQ(delivered, Names{"ada · Session usage crossed 90% (now 93%)"});
}

TEST_F(AppStateNotificationsTest, onlyReadingsFromTheEndpointCount)
{
    apply(80);
    apply(95, UsageSource::sharedCache);
    apply(95, UsageSource::vscodeCache);
    apply(95, UsageSource::snapshot);
    EXPECT_EQ(delivered, Names());
    apply(95, UsageSource::cli);
    EXPECT_EQ(delivered, Names{"ada · Session usage crossed 90% (now 95%)"});
}

TEST_F(AppStateNotificationsTest, theSettingOfTheMomentCounts)
{
    apply(80);
    state.updatePreferences([](Preferences& all) { all.notificationsEnabled = false; });
    apply(95);
    state.updatePreferences([](Preferences& all) { all.notificationsEnabled = true; });
    apply(96);
    EXPECT_EQ(delivered, Names());
    apply(100);
    EXPECT_EQ(delivered.size(), 1U);
}

TEST_F(AppStateNotificationsTest, aRefusalIsToldAtItsBeginning)
{
    applyTo("ada", failed(UsageFetchError::Kind::forbidden));
    applyTo("ada", failed(UsageFetchError::Kind::forbidden));
    EXPECT_EQ(delivered, Names{"ada · Blocked while updating usage numbers (HTTP 403)"});
    apply(10);
    applyTo("ada", failed(UsageFetchError::Kind::forbidden));
    EXPECT_EQ(delivered.size(), 2U);
}

TEST_F(AppStateNotificationsTest, anOutcomeOfAnAccountThatHasGoneIsNotTold)
{
    const std::string gone = id("ada");
    leaveOnly({});
    add("ben");
    rescan();
    delivered.clear();
    state.apply(failed(UsageFetchError::Kind::forbidden), gone);
    EXPECT_EQ(delivered, Names());
}

// Nothing is fetched for it by itself; what the user asks for is answered.
TEST_F(AppStateNotificationsTest, aSignedOutAccountIsToldOfWhenTheUserRefreshes)
{
    leaveOnly({});
    add("ben", TokenStatus::signedOut);
    rescan();
    delivered.clear();
    EXPECT_EQ(of("ben").revival, RevivalStatus::needsSignIn);
    waitFor(state.refreshNext());
    EXPECT_EQ(delivered, Names());
    waitFor(state.refresh(true));
    EXPECT_EQ(delivered, Names{"ben · Sign in to this account in Claude Code"});
}

// What brought no reading that counts may still need the user.
TEST_F(AppStateNotificationsTest, aSignInThatIsNeededIsToldBesideAReadingOfACache)
{
    FetchOutcome outcome = read(UsageSource::sharedCache);
    outcome.revival = RevivalStatus::needsSignIn;
    applyTo("ada", outcome);
    applyTo("ada", outcome);
    EXPECT_EQ(delivered, Names{"ada · Sign in to this account in Claude Code"});
}

// Both lose the same; but of one it is known that nothing has been used for an hour.
TEST_F(AppStateNotificationsTest, aForecastHeedsTheHistoryOfItsAccountAsItWasLoaded)
{
    turnOn(&Preferences::notifyProjectedSession);
    add("ben");
    UsageHistoryStore history(files, folders.vellumor() + "/history");
    for (int minute = -60; minute < 0; minute += 5) {
        const Instant at = clock.now() + std::chrono::minutes(minute);
        history.append(test::reading(65, at), dirOf("ada"), at);
    }
    rescan();
    delivered.clear();
    for (int i = 0; i < 2; ++i) {
        for (const char* const name : {"ada", "ben"}) {
            FetchOutcome outcome = read(UsageSource::endpoint);
            outcome.usage->windows.resize(1);
            outcome.usage->windows[0].percent = 65;
            outcome.usage->windows[0].resetsAt = ends + std::chrono::minutes(30);
            applyTo(name, outcome);
        }
        clock.advance(seconds(240));
    }
    EXPECT_EQ(delivered, Names{"ben · on pace to hit the Session limit ~2026-03-29T13:26:55Z"});
}

// Three intervals, as they really are: the chosen one, or a minute for each account.
TEST_F(AppStateNotificationsTest, aResetIsNewsForThreeOfTheIntervalsThatAreKept)
{
    const Names news = {"ada · Session usage has reset"};
    turnOn(&Preferences::notifyQuotaReset);
    state.setUserInterval(600);
    apply(40);
    applyWithoutSession(seconds(1500));
    EXPECT_EQ(delivered, news);
}
TEST_F(AppStateNotificationsTest, aResetIsNoNewsAfterThreeOfTheIntervalsThatAreKept)
{
    turnOn(&Preferences::notifyQuotaReset);
    state.setUserInterval(600);
    apply(40);
    applyWithoutSession(seconds(1801));
    EXPECT_EQ(delivered, Names());
}
TEST_F(AppStateNotificationsTest, aResetIsNewsForThreeMinutesOfEachAccount)
{
    turnOn(&Preferences::notifyQuotaReset);
    addAll({"ben", "cleo"});
    rescan();
    delivered.clear();
    state.setUserInterval(60);
    apply(40);
    applyWithoutSession(seconds(540));
    EXPECT_EQ(delivered, Names{"ada · Session usage has reset"});
}

TEST_F(AppStateNotificationsTest, whatIsToldAndWhatCameOfAFetchAndAScanIsCounted)
{
    EXPECT_EQ(recorded, Names{"accounts 1"});
    recorded.clear();
    apply(80);
    apply(93);
    apply(94);
    applyTo("ada", failed(UsageFetchError::Kind::forbidden));
    EXPECT_EQ(delivered.size(), 2U);
    EXPECT_EQ(recorded, (Names{"served endpoint", "served endpoint", "notification",
                               "served endpoint", "failed usage_403 in endpoint", "notification"}));
}

} // namespace
} // namespace vellumor::appStateNotificationsTest
