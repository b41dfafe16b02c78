#include "notifications/ProjectedAlerts.h"

#include "notifications/NotificationTesting.h"

#include <gtest/gtest.h>

namespace vellumor::projectedAlertsTest {
namespace {

using namespace test;
using Candidate = Projection::Candidate;

constexpr double hour = 3600;
const Instant sessionEnd = after(3 * hour); // 1772454600
const Instant weekEnd = after(72 * hour);   // 1772703000
const std::string sessionKey = "k3f9qz|projlimit|session|1772454600";
const std::string weeklyKey = "k3f9qz|projlimit|weekly_all|1772703000";
const std::string opusKey = "k3f9qz|projlimit|seven_day_opus|1772703000";

Candidate eta(const std::string& kind, Instant wall)
{
    return {"<" + kind + ">", kind, Projection::Eta{wall}, 120, wall};
}
// A forecast that falls short of the reset by so many seconds.
Candidate sessionShortBy(double shortfall)
{
    return eta("session", after(3 * hour - shortfall));
}
Candidate weeklyShortBy(double shortfall, const std::string& kind = "weekly_all")
{
    return eta(kind, after(72 * hour - shortfall));
}

// One account, reading after reading.
struct ProjectedAlertsTest : testing::Test {
    std::vector<LimitWindow> windows = {session(80, sessionEnd), weekly(80, weekEnd),
                                        opus(80, weekEnd)};
    EtaHolds holds;
    std::set<std::string> fired;
    std::optional<Instant> lastFired;
    bool deliverWeekly = true;
    bool deliverSession = true;
    Instant now = morning;

    ProjectedOutcome advance(const std::vector<Candidate>& candidates)
    {
        ProjectedOutcome outcome =
            advanceProjected({"k3f9qz", holds, candidates, windows, deliverWeekly, deliverSession,
                              lastFired, now, fired});
        holds = outcome.holds;
        fired.insert(outcome.consumedKeys.begin(), outcome.consumedKeys.end());
        if (outcome.firedAt)
            lastFired = outcome.firedAt;
        now += minutes(5);
        return outcome;
    }
    // The kind of which the reading alerts; nothing without an alert.
    std::string alert(const std::vector<Candidate>& candidates)
    {
        const auto fire = advance(candidates).fire;
        return fire ? fire->windowKind : "";
    }
};

using Keys = std::vector<std::string>;

TEST_F(ProjectedAlertsTest, oneReadingAloneNeverAlertsAndTheSecondDoes)
{
    const auto first = advance({sessionShortBy(2 * hour)});
    EXPECT_EQ(first.holds, (EtaHolds{{"session", {"session", sessionKey, 1, false}}}));
    EXPECT_FALSE(first.fire);
    EXPECT_FALSE(first.firedAt);
    EXPECT_TRUE(first.consumedKeys.empty());

    const auto second = advance({sessionShortBy(2 * hour)});
    EXPECT_EQ(second.holds, (EtaHolds{{"session", {"session", sessionKey, 2, true}}}));
    EXPECT_EQ(second.fire, (ProjectedFire{"session", "<session>", after(hour), sessionKey}));
    EXPECT_EQ(second.firedAt, morning + minutes(5));
    EXPECT_EQ(second.consumedKeys, Keys{sessionKey});

    const auto third = advance({sessionShortBy(2 * hour)});
    EXPECT_EQ(third.holds, (EtaHolds{{"session", {"session", sessionKey, 3, true}}}));
    EXPECT_FALSE(third.fire);
}

TEST_F(ProjectedAlertsTest, theShortfallMustBeWorthAWord)
{
    struct Row {
        Candidate candidate;
        bool isAlert;
    };
    const Row rows[] = {
        {sessionShortBy(-60), false},
        {sessionShortBy(0), false},
        {sessionShortBy(1799), false},
        {sessionShortBy(1799.999999), false},
        {sessionShortBy(1800), true},
        {sessionShortBy(1801), true},
        {weeklyShortBy(1800), false},
        {weeklyShortBy(4 * hour), false},
        {weeklyShortBy(17999.999999), false},
        {weeklyShortBy(18000), true},
        {weeklyShortBy(18000, "seven_day_opus"), true},
        {weeklyShortBy(17999, "seven_day_opus"), false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.candidate.kind);
        holds = {};
        fired = {};
        lastFired = {};
        EXPECT_EQ(alert({row.candidate}), "");
        EXPECT_EQ(alert({row.candidate}), row.isAlert ? row.candidate.kind : "");
        EXPECT_EQ(holds.at(row.candidate.kind).count, 2);
        EXPECT_EQ(holds.at(row.candidate.kind).wasEligible, row.isAlert);
    }
}

TEST_F(ProjectedAlertsTest, aSmallShortfallNeverAlertsHoweverManyReadingsPass)
{
    for (int count = 1; count <= 200; ++count) {
        EXPECT_EQ(alert({weeklyShortBy(4 * hour), sessionShortBy(1799)}), "");
        EXPECT_EQ(holds.at("weekly_all").count, count);
        EXPECT_EQ(holds.at("session").count, count);
    }
    EXPECT_TRUE(fired.empty());
    EXPECT_EQ(alert({weeklyShortBy(4 * hour), sessionShortBy(1800)}), "session");
}

TEST_F(ProjectedAlertsTest, aForecastThatIsOnPaceNeitherAlertsNorHolds)
{
    const Candidate onPace{"Session", "session", Projection::OnPace{95}, 97, {}};
    EXPECT_EQ(alert({onPace}), "");
    EXPECT_EQ(alert({onPace}), "");
    EXPECT_TRUE(holds.empty());
}

TEST_F(ProjectedAlertsTest, aForecastThatMissesOneReadingBeginsAnew)
{
    EXPECT_EQ(alert({sessionShortBy(2 * hour)}), "");
    EXPECT_EQ(alert({}), "");
    EXPECT_TRUE(holds.empty());
    EXPECT_EQ(alert({sessionShortBy(2 * hour)}), "");
    EXPECT_EQ(holds.at("session").count, 1);
    EXPECT_EQ(alert({sessionShortBy(2 * hour)}), "session");
}

TEST_F(ProjectedAlertsTest, onlyTheStepIntoEligibilityAlerts)
{
    fired = {sessionKey};
    EXPECT_EQ(alert({sessionShortBy(2 * hour)}), "");
    EXPECT_EQ(alert({sessionShortBy(2 * hour)}), "") << "told before";
    fired.clear();
    EXPECT_EQ(alert({sessionShortBy(0)}), "");
    EXPECT_TRUE(holds.at("session").wasEligible) << "for the rest of the run";
    EXPECT_EQ(alert({sessionShortBy(2 * hour)}), "");
}

TEST_F(ProjectedAlertsTest, withoutAWindowOrItsResetTimeACandidateIsPassedOver)
{
    windows = {session(80, {})};
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(alert({sessionShortBy(2 * hour), weeklyShortBy(9 * hour)}), "");
    EXPECT_TRUE(holds.empty());
}

TEST_F(ProjectedAlertsTest, ofTwoWindowsOfOneKindTheFirstHasTheResetTime)
{
    windows = {session(80, sessionEnd), session(80, after(9 * hour))};
    (void)advance({sessionShortBy(2 * hour)});
    EXPECT_EQ(holds.at("session").key, sessionKey);
}

TEST_F(ProjectedAlertsTest, ofSeveralTheEarliestSpeaksAndTheOthersStaySilent)
{
    const std::vector<Candidate> all = {weeklyShortBy(20 * hour), sessionShortBy(hour),
                                        weeklyShortBy(30 * hour, "seven_day_opus")};
    (void)advance(all);
    const auto outcome = advance(all);
    ASSERT_TRUE(outcome.fire);
    EXPECT_EQ(outcome.fire->windowKind, "session");
    EXPECT_EQ(outcome.firedAt, morning + minutes(5));
    EXPECT_EQ(std::set(outcome.consumedKeys.begin(), outcome.consumedKeys.end()),
              (std::set{sessionKey, weeklyKey, opusKey}));
    now += hours(2);
    holds = {};
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(alert(all), "") << "told or burnt";
}

TEST_F(ProjectedAlertsTest, ofTwoAtTheSameMomentTheFirstSpeaks)
{
    const std::vector<Candidate> all = {weeklyShortBy(9 * hour, "seven_day_opus"),
                                        weeklyShortBy(9 * hour)};
    EXPECT_EQ(alert(all), "");
    EXPECT_EQ(alert(all), "seven_day_opus");
}

TEST_F(ProjectedAlertsTest, withinNinetyMinutesOfTheLastAlertTheNextIsBurnt)
{
    const std::pair<double, bool> rows[] = {{-60, false},   {0, false},           {3600, false},
                                            {5399, false},  {5399.999999, false}, {5400, true},
                                            {5400.5, true}, {86400, true}};
    for (const auto& [sinceLast, isAlert] : rows) {
        SCOPED_TRACE(sinceLast);
        holds = {{"weekly_all", {"weekly_all", weeklyKey, 1, false}}};
        fired = {};
        lastFired = morning;
        now = after(sinceLast);
        const auto outcome = advance({weeklyShortBy(9 * hour)});
        EXPECT_EQ(outcome.fire.has_value(), isAlert);
        EXPECT_EQ(outcome.firedAt, isAlert ? std::optional(after(sinceLast)) : std::nullopt);
        EXPECT_EQ(outcome.consumedKeys, Keys{weeklyKey});
        EXPECT_EQ(lastFired, isAlert ? after(sinceLast) : morning);
    }
}

TEST_F(ProjectedAlertsTest, whatTheCooldownHasBurntDoesNotComeLater)
{
    lastFired = morning;
    EXPECT_EQ(alert({weeklyShortBy(9 * hour)}), "");
    EXPECT_EQ(alert({weeklyShortBy(9 * hour)}), "");
    EXPECT_EQ(fired, std::set{weeklyKey});
    now = after(3 * hour);
    EXPECT_EQ(alert({}), "");
    EXPECT_EQ(alert({weeklyShortBy(9 * hour)}), "");
    EXPECT_EQ(alert({weeklyShortBy(9 * hour)}), "");
}

TEST_F(ProjectedAlertsTest, aNewPeriodBeginsAnewAndMayAlertAgain)
{
    EXPECT_EQ(alert({sessionShortBy(2 * hour)}), "");
    EXPECT_EQ(alert({sessionShortBy(2 * hour)}), "session");
    now = after(3 * hour);
    windows = {session(80, after(8 * hour))};
    const Candidate next = eta("session", after(6 * hour));
    EXPECT_EQ(alert({next}), "");
    EXPECT_EQ(holds.at("session"),
              (EtaHold{"session", "k3f9qz|projlimit|session|1772472600", 1, false}));
    EXPECT_EQ(alert({next}), "session");
}

TEST_F(ProjectedAlertsTest, eachFamilyHasItsOwnSwitch)
{
    const std::vector<Candidate> all = {sessionShortBy(2 * hour), weeklyShortBy(9 * hour),
                                        weeklyShortBy(10 * hour, "seven_day_opus")};
    deliverSession = false;
    EXPECT_EQ(alert(all), "");
    const auto weeklies = advance(all);
    ASSERT_TRUE(weeklies.fire);
    EXPECT_EQ(weeklies.fire->windowKind, "seven_day_opus");
    EXPECT_EQ(weeklies.consumedKeys, (Keys{opusKey, weeklyKey}));
    EXPECT_TRUE(holds.at("session").wasEligible);

    holds = {};
    lastFired = {};
    fired = {};
    deliverSession = true;
    deliverWeekly = false;
    EXPECT_EQ(alert(all), "");
    EXPECT_EQ(advance(all).consumedKeys, Keys{sessionKey});
}

TEST_F(ProjectedAlertsTest, aSwitchTurnedOnAfterTheStepDoesNotBringItBack)
{
    deliverSession = false;
    EXPECT_EQ(alert({sessionShortBy(2 * hour)}), "");
    EXPECT_EQ(alert({sessionShortBy(2 * hour)}), "");
    EXPECT_TRUE(fired.empty());
    deliverSession = true;
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(alert({sessionShortBy(2 * hour)}), "");
    EXPECT_TRUE(fired.empty());
}

TEST_F(ProjectedAlertsTest, resetTimesAtTheEndsOfTheCalendarAreDefined)
{
    windows = {session(80, yearLast), weekly(80, yearOne)};
    const std::vector<Candidate> all = {eta("session", yearOne), eta("weekly_all", yearLast)};
    EXPECT_EQ(alert(all), "");
    EXPECT_EQ(alert(all), "session");
    EXPECT_EQ(holds.at("session").key, "k3f9qz|projlimit|session|253402300799");
    EXPECT_EQ(holds.at("weekly_all"),
              (EtaHold{"weekly_all", "k3f9qz|projlimit|weekly_all|-62135596800", 2, false}));
}

} // namespace
} // namespace vellumor::projectedAlertsTest
