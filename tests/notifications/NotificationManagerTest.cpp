#include "notifications/NotificationManager.h"

#include "notifications/NotifiedWorld.h"

#include <gtest/gtest.h>

namespace vellumor::notificationManagerTest {
namespace {

using namespace test;

struct NotificationManagerTest : testing::Test, NotifiedWorld {
    const Instant end = after(9000); // of the session that the tests begin with

    // Reports `percent` of that session, `at` seconds after the morning.
    Told session(double percent, double at,
                 std::optional<UsageSource> source = UsageSource::endpoint)
    {
        return observe(reading({test::session(percent, end)}, after(at)), source);
    }
};

constexpr double week = 604800;

TEST_F(NotificationManagerTest, eachNotificationHasTheProgramsNameAndIsCounted)
{
    int count = 0;
    manager.onDeliver = [&] {
        ++count;
        EXPECT_EQ(titles.size(), static_cast<std::size_t>(count)) << "after it was handed over";
    };
    session(40, 0);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(session(60, 60), Told{"Work · Session usage crossed 50% (now 60%)"});
    EXPECT_EQ(count, 1);
    session(100, 120);
    EXPECT_EQ(count, 2);
    EXPECT_EQ(titles, (std::vector<std::string>{"Vellumor", "Vellumor"}));
}

TEST_F(NotificationManagerTest, onlyAReadingFromTheEndpointCounts)
{
    session(40, 0);
    for (const auto source :
         {std::optional<UsageSource>(), std::optional(UsageSource::sharedCache),
          std::optional(UsageSource::vscodeCache), std::optional(UsageSource::snapshot)}) {
        EXPECT_EQ(session(100, 60, source), Told{});
        EXPECT_EQ(observe(reading({}, after(99999)), source), Told{}) << "nor its time";
    }
    EXPECT_EQ(manager.rememberedAlerts(), 0);
    EXPECT_EQ(session(60, 120, UsageSource::cli),
              Told{"Work · Session usage crossed 50% (now 60%)"})
        << "40 is still what was before";
}

TEST_F(NotificationManagerTest, theFirstReadingOnlySeedsTheComparison)
{
    EXPECT_EQ(session(95, 0), Told{});
    EXPECT_EQ(session(96, 60), Told{});
    EXPECT_EQ(session(100, 120), Told{"Work · Session limit reached — resets in 2h 28m"});
}

TEST_F(NotificationManagerTest, aRestartForgetsEverythingAndTellsNothingAgain)
{
    session(40, 0);
    session(95, 60);
    NotifiedWorld restarted;
    const auto again = [&](double percent, double at) {
        return restarted.observe(reading({test::session(percent, end)}, after(at)));
    };
    EXPECT_EQ(again(95, 120), Told{});
    EXPECT_EQ(again(96, 180), Told{});
    NotifiedWorld restartedLater;
    EXPECT_EQ(restartedLater.observe(reading({}, end + minutes(1))), Told{});
    EXPECT_EQ(restartedLater.observe(reading({}, end + minutes(2))), Told{});
}

TEST_F(NotificationManagerTest, theLimitHasNoTimeLeftWhenTheResetIsNotAhead)
{
    preferences = only({&Preferences::notifySessionLimit});
    session(95, 8000);
    EXPECT_EQ(session(100, 9000), Told{"Work · Session "
                                       "limit reached"});
}

TEST_F(NotificationManagerTest, aSessionThatIsGonePastItsResetHasResetOnce)
{
    preferences = only({&Preferences::notifyQuotaReset});
    session(40, 8000);
    EXPECT_EQ(observe(reading({}, after(8999))), Told{});
    EXPECT_EQ(observe(reading({}, after(9000))), Told{"Work · Session "
                                                      "usage has reset"});
    EXPECT_EQ(observe(reading({}, after(9060))), Told{});
    EXPECT_EQ(observe(reading({}, after(99'000))), Told{}) << "its anchor is gone";
    EXPECT_EQ(observe(reading({test::session(1, after(110'000))}, after(99'060))), Told{});
    EXPECT_EQ(observe(reading({test::session(0, {})}, after(110'001))), Told{"Work · Session "
                                                                             "usage has reset"});
}

TEST_F(NotificationManagerTest, aWeeklyWindowThatIsGoneResetsEveryWeek)
{
    preferences = only({&Preferences::notifyQuotaReset});
    observe(reading({opus(40, after(600))}));
    EXPECT_EQ(observe(reading({}, after(600))), Told{"Work · Weekly "
                                                     "(Opus) usage has "
                                                     "reset"});
    EXPECT_EQ(observe(reading({}, after(600 + week - 1))), Told{});
    EXPECT_EQ(observe(reading({}, after(600 + week))), Told{"Work · Weekly "
                                                            "(Opus) usage has "
                                                            "reset"});
    EXPECT_EQ(observe(reading({}, after(600 + 4.5 * week))), Told{}) << "stale";
    EXPECT_EQ(observe(reading({}, after(600 + 5 * week + 200))), Told{"Work · Weekly "
                                                                      "(Opus) usage has "
                                                                      "reset"});
}

TEST_F(NotificationManagerTest, aResetTimeThatJumpsForwardIsAResetAndBecomesTheAnchor)
{
    preferences = only({&Preferences::notifyQuotaReset});
    session(40, 0);
    const auto at = [&](double offset, double time) {
        return observe(reading({test::session(40, after(9000 + offset))}, after(time)));
    };
    EXPECT_EQ(at(300, 60), Told{});
    EXPECT_EQ(at(301, 120), Told{"Work · Session "
                                 "usage has reset"})
        << "though it lies "
           "ahead";
    EXPECT_EQ(at(601, 180), Told{}) << "301 is the anchor "
                                       "now";
    EXPECT_EQ(at(602, 240), Told{"Work · Session "
                                 "usage has reset"});
}

TEST_F(NotificationManagerTest, aResetIsNewsForThreeIntervalsAndFiveMinutesAtTheLeast)
{
    struct Row {
        double interval;
        double late;
        bool isTold;
    };
    const Row rows[] = {
        {300, 900, true},   {300, 900.000001, false}, {300, 1200, false}, {60, 300, true},
        {60, 300.5, false}, {100, 300, true},         {101, 303, true},   {101, 303.1, false},
        {1800, 5400, true}, {1800, 5401, false},      {0, 300, true},     {-60, 301, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(std::to_string(row.interval) + " s, late by " + std::to_string(row.late));
        NotifiedWorld fresh;
        fresh.interval = row.interval;
        fresh.preferences = only({&Preferences::notifyQuotaReset});
        fresh.observe(reading({test::session(40, morning)}, after(-60)));
        EXPECT_EQ(fresh.observe(reading({}, after(row.late))), row.isTold ? Told{"Work · "
                                                                                 "Session "
                                                                                 "usage "
                                                                                 "has "
                                                                                 "reset"}
                                                                          : Told{});
        EXPECT_EQ(fresh.manager.rememberedAlerts(), 1) << "noticed once, "
                                                          "told or not";
        EXPECT_EQ(fresh.observe(reading({}, after(row.late + 1))), Told{});
    }
}

// While notifications are off
// the manager goes on watching,
// so that turning them on brings
// nothing that happened before.
TEST_F(NotificationManagerTest, whatHappensWhileNotificationsAreOffIsNotToldLater)
{
    session(40, 0);
    preferences.notificationsEnabled = false;
    EXPECT_EQ(session(95, 60), Told{});
    EXPECT_EQ(manager.rememberedAlerts(), 0) << "no level is used up";
    preferences.notificationsEnabled = true;
    EXPECT_EQ(session(96, 120), Told{}) << "it lay above before";

    preferences.notificationsEnabled = false;
    EXPECT_EQ(observe(reading({}, after(9001))), Told{});
    EXPECT_EQ(manager.rememberedAlerts(), 1) << "but the reset is "
                                                "noticed";
    preferences.notificationsEnabled = true;
    EXPECT_EQ(observe(reading({}, after(9002))), Told{});
}

TEST_F(NotificationManagerTest, aLevelThatWasPassedWhileOffMayStillFireWhenItIsCrossedAnew)
{
    preferences = only({&Preferences::notifySession50});
    session(40, 0);
    preferences.notificationsEnabled = false;
    session(60, 60);
    session(45, 120);
    preferences.notificationsEnabled = true;
    EXPECT_EQ(session(60, 180), Told{"Work · Session "
                                     "usage crossed 50% "
                                     "(now 60%)"});
}

TEST_F(NotificationManagerTest, aForecastMustHoldForTwoReadings)
{
    preferences = only({&Preferences::notifyProjectedSession});
    EXPECT_EQ(session(80, 0), Told{});
    EXPECT_EQ(session(80, 300), Told{"Work · on pace to "
                                     "hit the Session "
                                     "limit ~10:13"});
    EXPECT_EQ(session(85, 600), Told{});
}

TEST_F(NotificationManagerTest, aForecastForAnotherDayHasItsWeekday)
{
    preferences = only({&Preferences::notifyProjectedWeekly});
    const Instant weekEnd = after(week / 2);
    observe(reading({weekly(60, weekEnd)}, after(0)));
    EXPECT_EQ(observe(reading({weekly(60, weekEnd)}, after(60))), Told{"Work · on pace to "
                                                                       "hit the Weekly "
                                                                       "limit ~Wednesday "
                                                                       "17:31"});
}

TEST_F(NotificationManagerTest, aForecastThatHeldWhileNotificationsWereOffStaysSilent)
{
    preferences = only({&Preferences::notifyProjectedSession, &Preferences::notifyProjectedWeekly});
    preferences.notificationsEnabled = false;
    const Instant weekEnd = after(week / 2);
    const auto both = [&](double at) {
        return observe(reading({test::session(80, end), weekly(60, weekEnd)}, after(at)));
    };
    EXPECT_EQ(both(0), Told{});
    EXPECT_EQ(both(300), Told{});
    EXPECT_EQ(manager.rememberedAlerts(), 0);
    preferences.notificationsEnabled = true;
    EXPECT_EQ(both(600), Told{});
    EXPECT_EQ(both(900), Told{});
}

TEST_F(NotificationManagerTest, theForecastHeedsTheHistory)
{
    preferences = only({&Preferences::notifyProjectedSession});
    for (int minute = -60; minute < 0; minute += 5)
        history.push_back({morning + minutes(minute), {{"session", 65}}});
    session(65, 0);
    EXPECT_EQ(session(65, 240), Told{}) << "65 on average, but "
                                           "nothing of late";
    NotifiedWorld without;
    without.preferences = preferences;
    without.observe(reading({test::session(65, end)}, after(0)));
    EXPECT_EQ(without.observe(reading({test::session(65, end)}, after(240))).size(), 1);
}

TEST_F(NotificationManagerTest, creditsAreToldEachTimeTheirSpendingBegins)
{
    preferences = only({&Preferences::notifyCreditBurn});
    const auto spent = [&](double credits, double at) {
        Usage usage = reading({}, after(at));
        usage.extraUsage = ExtraUsage{};
        usage.extraUsage->usedCredits = credits;
        usage.extraUsage->currency = "EUR";
        usage.extraUsage->monthlyLimit = 2000;
        return observe(usage);
    };
    const Told begun = {"Work · usage limit "
                        "reached — now spending "
                        "usage credits (€0.50 "
                        "of €20.00)"};
    EXPECT_EQ(spent(0, 0), Told{});
    EXPECT_EQ(spent(50, 60), begun);
    EXPECT_EQ(spent(60, 120), Told{});
    EXPECT_EQ(spent(0, 180), Told{});
    EXPECT_EQ(spent(50, 240), begun);
    preferences.notifyCreditBurn = false;
    spent(0, 300);
    EXPECT_EQ(spent(50, 360), Told{});
}

TEST_F(NotificationManagerTest, theClosingOfASessionIsToldOnce)
{
    preferences = only({&Preferences::notifySessionClosing});
    session(40, 9000 - 33 * 60);
    EXPECT_EQ(session(40, 9000 - 29 * 60), Told{"Work · session "
                                                "window closes at "
                                                "12:00 — 60% left"});
    EXPECT_EQ(session(40, 9000 - 25 * 60), Told{});
    preferences.sessionClosingLeadMinutes = 20;
    EXPECT_EQ(session(40, 9000 - 19 * 60), Told{}) << "nor with another "
                                                      "lead";
    preferences.notifySessionClosing = false;
}

TEST_F(NotificationManagerTest, theCustomLevelTheCreditsAndTheClosingComeInThisOrder)
{
    preferences = only({&Preferences::notifyCreditBurn, &Preferences::notifySessionClosing});
    preferences.customThresholds = {{work.id, 45}};
    Usage usage = reading({test::session(40, end)}, end - minutes(33));
    usage.extraUsage = ExtraUsage{};
    usage.extraUsage->usedCredits = 0;
    EXPECT_EQ(observe(usage), Told{});
    usage.windows[0].percent = 50;
    usage.extraUsage->usedCredits = 150;
    usage.fetchedAt = end - minutes(29);
    EXPECT_EQ(observe(usage),
              (Told{"Work · Session usage crossed 45% (now 50%)",
                    "Work · usage limit reached — now spending usage credits (1.50 spent)",
                    "Work · session window closes at 12:00 — 50% left"}));
}

TEST_F(NotificationManagerTest, theCustomLevelIsHeldToItsBoundsAndIsTheAccountsOwn)
{
    const std::tuple<double, double, double, const char*> rows[] = {
        {0.2, 0.5, 1,
         "Work · Session "
         "usage crossed 1% "
         "(now 1%)"},
        {100, 98, 99,
         "Work · Session "
         "usage crossed 99% "
         "(now 99%)"},
        {72.5, 72, 73,
         "Work · Session "
         "usage crossed "
         "72.5% (now 73%)"},
    };
    for (const auto& [stored, before, now_, body] : rows) {
        NotifiedWorld fresh;
        fresh.preferences = only({});
        fresh.preferences.customThresholds = {{work.id, stored}};
        const Account other = account("other1", "Home");
        for (const double percent : {before, now_}) {
            const Usage usage = reading({test::session(percent, end)});
            EXPECT_EQ(fresh.observe(other, usage), Told{});
            EXPECT_EQ(fresh.observe(usage), percent == before ? Told{} : Told{body});
        }
    }
}

TEST_F(NotificationManagerTest, aKeyIsForgottenEightDaysAfterItsReset)
{
    preferences = only({&Preferences::notifySession50});
    session(40, 0);
    session(60, 60);
    EXPECT_EQ(manager.rememberedAlerts(), 1);
    const Account other = account("other1", "Home");
    observe(other, reading({}, end + hours(8 * 24)));
    EXPECT_EQ(manager.rememberedAlerts(), 1);
    observe(other, reading({}, end + hours(8 * 24) + seconds(1)));
    EXPECT_EQ(manager.rememberedAlerts(), 0);
}

// Between two accounts nothing
// is shared but the clock.
TEST_F(NotificationManagerTest, accountsDoNotMeetEachOther)
{
    const Account home = account("other1", "Home");
    session(40, 0);
    EXPECT_EQ(observe(home, reading({test::session(95, end)}, after(30))), Told{});
    EXPECT_EQ(session(60, 60), Told{"Work · Session "
                                    "usage crossed 50% "
                                    "(now 60%)"});
    EXPECT_EQ(observe(home, reading({test::session(100, end)}, after(90))),
              Told{"Home · Session "
                   "limit reached — "
                   "resets in 2h 28m"});
}

TEST_F(NotificationManagerTest, anAccountIsNewWhenTheScanBeforeHadItNot)
{
    const Account first = account("a1", "One");
    const Account second = account("b2", "Two");
    const auto ids = [&](const std::vector<Account>& accounts) {
        std::vector<std::string> found;
        for (const Account& one : manager.reconcile(accounts, preferences))
            found.push_back(one.id);
        return found;
    };
    using Ids = std::vector<std::string>;
    EXPECT_EQ(ids({first}), Ids{});
    EXPECT_EQ(taken(), Told{});
    EXPECT_EQ(ids({second, first, work}), (Ids{"b2", work.id}));
    EXPECT_EQ(taken(), (Told{"New account "
                             "discovered · Two",
                             "New account "
                             "discovered · "
                             "Work"}));
    EXPECT_EQ(ids({second, first, work}), Ids{});
    EXPECT_EQ(taken(), Told{});
    ids({first});
    preferences.notificationsEnabled = false;
    EXPECT_EQ(ids({first, second}), Ids{"b2"}) << "found all the same";
    EXPECT_EQ(taken(), Told{});
}

struct EpisodeRow {
    FetchOutcome good;
    FetchOutcome bad;
    const char* body;
};

std::vector<EpisodeRow> episodes()
{
    FetchOutcome forbidden;
    forbidden.error = UsageFetchError{UsageFetchError::Kind::forbidden, {}, {}, 403};
    FetchOutcome unauthorized;
    unauthorized.error = UsageFetchError{UsageFetchError::Kind::unauthorized, {}, {}, 401};
    FetchOutcome needsSignIn;
    needsSignIn.revival = RevivalStatus::needsSignIn;
    FetchOutcome retrying;
    retrying.revival = RevivalStatus::retrying;
    const char* const blocked = "Work · Blocked while "
                                "updating usage numbers "
                                "(HTTP 403)";
    const char* const signIn = "Work · Sign in to this "
                               "account in Claude Code";
    return {{{}, forbidden, blocked},          {unauthorized, forbidden, blocked},
            {needsSignIn, forbidden, blocked}, {{}, needsSignIn, signIn},
            {retrying, needsSignIn, signIn},   {forbidden, needsSignIn, signIn}};
}

TEST_F(NotificationManagerTest, anEpisodeIsToldAtItsBeginningAndArmedByItsEnd)
{
    for (const EpisodeRow& row : episodes()) {
        NotifiedWorld fresh;
        const auto note = [&](const FetchOutcome& outcome) {
            fresh.manager.noteOutcome(fresh.work, outcome, fresh.preferences);
            return fresh.taken();
        };
        const Told begun = {row.body};
        EXPECT_EQ(note(row.bad), begun);
        EXPECT_EQ(note(row.bad), Told{});
        note(row.good);
        EXPECT_EQ(note(row.bad), begun);
        fresh.manager.noteOutcome(account("other1", "Home"), row.good, fresh.preferences);
        fresh.taken();
        EXPECT_EQ(note(row.bad), Told{}) << "another "
                                            "account's "
                                            "outcome arms "
                                            "nothing";
        note(row.good);
        fresh.preferences.notificationsEnabled = false;
        EXPECT_EQ(note(row.bad), Told{});
        fresh.preferences.notificationsEnabled = true;
        EXPECT_EQ(note(row.bad), Told{}) << "nor later";
        note(row.good);
        EXPECT_EQ(note(row.bad), begun);
    }
}

TEST_F(NotificationManagerTest, oneOutcomeCanBeginBothEpisodes)
{
    FetchOutcome outcome;
    outcome.error = UsageFetchError{UsageFetchError::Kind::forbidden, {}, {}, 403};
    outcome.revival = RevivalStatus::needsSignIn;
    manager.noteOutcome(work, outcome, preferences);
    EXPECT_EQ(taken(), (Told{"Work · Blocked "
                             "while updating "
                             "usage numbers "
                             "(HTTP 403)",
                             "Work · Sign in to "
                             "this account in "
                             "Claude Code"}));
}

} // namespace
} // namespace vellumor::notificationManagerTest
