#include "notifications/WindowAnchors.h"

#include "notifications/NotificationTesting.h"

#include <gtest/gtest.h>

#include <limits>

namespace vellumor::windowAnchorsTest {
namespace {

using namespace test;

constexpr double week = 604800;
constexpr double tick = 0.000001;
const std::string id = "k3f9qz";

std::string resetKey(const std::string& kind, Instant boundary)
{
    return id + "|reset|" + kind + "|" +
           std::to_string(std::chrono::floor<seconds>(boundary).time_since_epoch().count());
}

std::vector<Rollover> found(const WindowAnchors& anchors, const Usage& usage, double grace = 900)
{
    return rollovers(id, usage, anchors, usage.fetchedAt, grace, {});
}

TEST(WindowAnchors, resetTimesUpToThreeHundredSecondsApartAreOne)
{
    for (const double offset : {0.0, 1.0, 200.0, 300.0 - tick, 300.0}) {
        EXPECT_TRUE(isSameReset(morning, after(offset))) << offset;
        EXPECT_TRUE(isSameReset(morning, after(-offset))) << -offset;
    }
    for (const double offset : {300.0 + tick, 301.0, 18000.0}) {
        EXPECT_FALSE(isSameReset(morning, after(offset))) << offset;
        EXPECT_FALSE(isSameReset(morning, after(-offset))) << -offset;
    }
    EXPECT_FALSE(isSameReset(yearOne, yearLast));
}

TEST(WindowAnchors, aWindowWithAResetTimeRollsOverWhenItIsMoreThanThreeHundredSecondsLater)
{
    const std::pair<double, bool> rows[] = {
        {-week, false}, {-301, false},      {0, false},  {200, false},
        {300, false},   {300 + tick, true}, {301, true}, {week, true},
    };
    for (const auto& [later, isRollover] : rows) {
        SCOPED_TRACE(later);
        // Neither what the clock says counts then, nor the percent.
        for (const double now : {-3600.0, 0.0, 60.0}) {
            const Usage usage = reading({session(90, after(later))}, after(now));
            EXPECT_EQ(found({{{"session"}, {morning, "session"}}}, usage).size(),
                      isRollover ? 1 : 0);
        }
    }
}

TEST(WindowAnchors, aWindowWithoutAResetTimeOrGoneRollsOverAtItsAnchor)
{
    const WindowAnchors anchors = {{{"session"}, {morning, "session"}}};
    const std::pair<double, bool> rows[] = {{-1, false}, {-tick, false}, {0, true}, {tick, true}};
    for (const auto& [now, isRollover] : rows) {
        SCOPED_TRACE(now);
        const std::size_t count = isRollover ? 1 : 0;
        EXPECT_EQ(found(anchors, reading({}, after(now))).size(), count);
        EXPECT_EQ(found(anchors, reading({session(3, {})}, after(now))).size(), count);
        EXPECT_EQ(found(anchors, reading({weekly(3, after(900))}, after(now))).size(), count);
    }
}

TEST(WindowAnchors, aRolloverTellsTheResetThatHasPassed)
{
    const WindowAnchors anchors = {{{"weekly_scoped"}, {after(0.75), "weekly"}}};
    const Rollover expected{
        {"weekly_scoped"}, "Weekly (Opus)", resetKey("weekly_scoped", morning), after(0.75), false};
    EXPECT_EQ(found(anchors, reading({scoped("Opus", 0, after(week))}, after(60))),
              std::vector{expected});

    Rollover withoutScope = expected;
    withoutScope.title = "Weekly (scoped)";
    EXPECT_EQ(found(anchors, reading({}, after(60))), std::vector{withoutScope});
}

TEST(WindowAnchors, aRolloverIsStaleWhenItsResetPassedLongerAgoThanTheGrace)
{
    const std::pair<double, bool> rows[] = {{-18000, false}, {0, false},         {300, false},
                                            {900, false},    {900 + tick, true}, {1200, true}};
    for (const auto& [now, isStale] : rows) {
        SCOPED_TRACE(now);
        const auto all = found({{{"session"}, {morning, "session"}}},
                               reading({session(1, after(18000))}, after(now)));
        ASSERT_EQ(all.size(), 1);
        EXPECT_EQ(all[0].isStale, isStale);
    }
}

TEST(WindowAnchors, rolloversComeInTheOrderOfTheirKinds)
{
    WindowAnchors anchors;
    for (const char* kind : {"weekly_all", "session", "Zebra", "seven_day_opus", "a|b", ""})
        anchors[{kind}] = {morning, "weekly"};
    std::vector<std::string> kinds;
    for (const Rollover& rollover : found(anchors, reading({}, after(1))))
        kinds.push_back(rollover.window.kind);
    EXPECT_EQ(kinds, (std::vector<std::string>{"", "Zebra", "a|b", "session", "seven_day_opus",
                                               "weekly_all"}));
}

TEST(WindowAnchors, oneResetIsFoundOnce)
{
    const WindowAnchors anchors = {{{"session"}, {morning, "session"}},
                                   {{"weekly_all"}, {morning, "weekly"}}};
    const Usage usage = reading({}, after(60));
    const auto left =
        rollovers(id, usage, anchors, usage.fetchedAt, 900, {resetKey("session", morning)});
    ASSERT_EQ(left.size(), 1);
    EXPECT_EQ(left[0].window.kind, "weekly_all");
    const auto other = rollovers("other1", usage, anchors, usage.fetchedAt, 900,
                                 {resetKey("session", morning), resetKey("weekly_all", morning)});
    EXPECT_EQ(other.size(), 2) << "another account's";
}

TEST(WindowAnchors, ofTwoWindowsOfOneKindTheFirstCounts)
{
    const WindowAnchors anchors = {{{"unknown"}, {morning, ""}}};
    const auto first = window("unknown", "", 1, after(0));
    const auto second = window("unknown", "", 2, after(9000));
    EXPECT_TRUE(found(anchors, reading({first, second})).empty());
    EXPECT_EQ(found(anchors, reading({second, first})).size(), 1);
    WindowAnchors known = anchors;
    const CanonicalUsage canonical = canonicalized(reading({first, second, weekly(3, {})}), known);
    EXPECT_EQ(canonical.usage, reading({first, weekly(3, {})})) << "the second is left out";
    EXPECT_EQ(canonical.steps,
              (std::vector<WindowStep>{{first, "unknown", 0}, {weekly(3, {}), "weekly_all", 0}}));
}

TEST(WindowAnchors, aWindowWithoutACadenceLosesItsAnchorWhenItRetires)
{
    for (const auto& [kind, group] :
         std::vector<std::pair<std::string, std::string>>{{"session", "session"},
                                                          {"session", "weekly"},
                                                          {"session", ""},
                                                          {"burst", "session"},
                                                          {"unknown", ""},
                                                          {"monthly", "monthly"}}) {
        WindowAnchors anchors = {{{kind}, {morning, group}}, {{"weekly_all"}, {morning, "weekly"}}};
        retire({{kind}, "", "", morning, false}, anchors, after(60));
        EXPECT_EQ(anchors, (WindowAnchors{{{"weekly_all"}, {morning, "weekly"}}})) << kind;
    }
}

TEST(WindowAnchors, aWeeklyAnchorMovesToItsFirstCadencePointStrictlyAfterNow)
{
    const std::pair<double, double> rows[] = {
        {-week - 1, -week},
        {-week, 0},
        {-1, 0},
        {0, week},
        {tick, week},
        {60, week},
        {week - tick, week},
        {week, 2 * week},
        {week + 1, 2 * week},
        {10.5 * week, 11 * week},
    };
    for (const auto& [now, moved] : rows) {
        SCOPED_TRACE(now);
        for (const auto& [kind, group] : std::vector<std::pair<std::string, std::string>>{
                 {"weekly_all", ""}, {"unknown", "weekly"}, {"seven_day_opus", "other"}}) {
            WindowAnchors anchors = {{{kind}, {morning, group, 40}}};
            retire({{kind}, "", "", morning, false}, anchors, after(now));
            EXPECT_EQ(anchors, (WindowAnchors{{{kind}, {after(moved), group, 0}}}));
        }
    }
}

TEST(WindowAnchors, retiringWithoutAnAnchorChangesNothing)
{
    WindowAnchors anchors = {{{"weekly_all"}, {morning, "weekly"}}};
    const WindowAnchors before = anchors;
    retire({{"seven_day_opus"}, "", "", morning, false}, anchors, after(60));
    EXPECT_EQ(anchors, before);
}

TEST(WindowAnchors, anAnchorMovesOnFromTheFirstYearAndBackFromTheLast)
{
    for (const Instant resetsAt : {yearOne, yearLast}) {
        WindowAnchors anchors = {{{"weekly_all"}, {resetsAt, "weekly"}}};
        retire({{"weekly_all"}, "", "", resetsAt, false}, anchors, morning);
        const double ahead = secondsBetween(morning, anchors.at({"weekly_all"}).resetsAt);
        EXPECT_GT(ahead, 0);
        EXPECT_LE(ahead, week);
        EXPECT_EQ((anchors.at({"weekly_all"}).resetsAt - resetsAt) % std::chrono::days(7),
                  std::chrono::microseconds(0));
    }
}

TEST(WindowAnchors, aReportedResetNearTheAnchorIsTheAnchors)
{
    const WindowAnchor anchor{morning, "session"};
    EXPECT_EQ(canonicalReset(after(5), nullptr), after(5));
    for (const double near : {-300.0, -200.0, -tick, 0.0, 200.0, 300.0})
        EXPECT_EQ(canonicalReset(after(near), &anchor), morning) << near;
    for (const double far : {-week, -300.0 - tick, 300.0 + tick, 301.0, week})
        EXPECT_EQ(canonicalReset(after(far), &anchor), after(far)) << far;
}

TEST(WindowAnchors, canonicalizingHoldsResetTimesSteadyAndLearnsNewOnes)
{
    WindowAnchors anchors = {{{"session"}, {morning, "old group"}},
                             {{"weekly_all"}, {after(week), "weekly"}},
                             {{"gone"}, {morning, ""}}};
    Usage usage = reading({session(10, after(200)), weekly(20, after(week + 301)),
                           opus(30, after(77)), window("unknown", "", 40, {})},
                          after(-60));
    usage.extraUsage = ExtraUsage{};
    Usage expected = usage;
    expected.windows[0].resetsAt = morning;
    EXPECT_EQ(canonicalized(usage, anchors).usage, expected);
    EXPECT_EQ(anchors, (WindowAnchors{{{"session"}, {morning, "session", 10}},
                                      {{"weekly_all"}, {after(week + 301), "weekly", 20}},
                                      {{"seven_day_opus"}, {after(77), "weekly", 30}},
                                      {{"gone"}, {morning, ""}}}));
}

TEST(WindowAnchors, aWindowWithoutAResetTimeKeepsItsAnchor)
{
    WindowAnchors anchors = {{{"session"}, {morning, "session"}}};
    const Usage usage = reading({session(10, {})});
    EXPECT_EQ(canonicalized(usage, anchors).usage, usage);
    EXPECT_EQ(anchors, (WindowAnchors{{{"session"}, {morning, "session"}}}));
}

TEST(WindowAnchors, aWindowKnownByItsKindThatComesBackCrossesFromZero)
{
    const auto priorAfter = [](const std::vector<LimitWindow>& between) {
        WindowAnchors anchors;
        (void)canonicalized(reading({session(40, morning)}), anchors);
        (void)canonicalized(reading(between), anchors);
        return canonicalized(reading({session(60, morning)}), anchors).steps.at(0).prior;
    };
    EXPECT_EQ(priorAfter({}), 0);
    EXPECT_EQ(priorAfter({session(50, {})}), 0);
    EXPECT_EQ(priorAfter({session(50, morning)}), 50);
}

TEST(WindowAnchors, aWindowKnownByItsScopeKeepsWhatItWasAndOnlySeedsAtFirst)
{
    WindowAnchors anchors;
    const LimitWindow first = scoped("Opus", 40, morning);
    const LimitWindow second = scoped("Sonnet", 60, after(9000));
    EXPECT_EQ(canonicalized(reading({second, first}), anchors).steps,
              (std::vector<WindowStep>{{second, "weekly_scoped/Sonnet", 60},
                                       {first, "weekly_scoped/Opus", 40}}));
    (void)canonicalized(reading({first}), anchors);
    const LimitWindow now = scoped("Sonnet", 95, after(9000));
    EXPECT_EQ(canonicalized(reading({now}), anchors).steps,
              (std::vector<WindowStep>{{now, "weekly_scoped/Sonnet", 60}}));
}

// Each reading alone may move within the tolerance, but it must not drag the anchor along.
TEST(WindowAnchors, resetTimesThatCreepOnDoNotMoveTheAnchor)
{
    WindowAnchors anchors;
    (void)canonicalized(reading({session(1, morning)}), anchors);
    for (double creep = 100; creep <= 300; creep += 100) {
        const Usage usage = canonicalized(reading({session(1, after(creep))}), anchors).usage;
        EXPECT_EQ(usage.windows[0].resetsAt, morning);
    }
    EXPECT_EQ(canonicalized(reading({session(1, after(400))}), anchors).usage.windows[0].resetsAt,
              after(400));
}

TEST(WindowAnchors, thePercentBeforeCountsOnlyForTheSamePeriod)
{
    const WindowAnchor before{morning, "session", 42};
    EXPECT_EQ(sameWindowPercent(nullptr, morning), 0);
    const std::pair<double, double> rows[] = {{-301, 0}, {-300 - tick, 0}, {-300, 42}, {0, 42},
                                              {300, 42}, {300 + tick, 0},  {18000, 0}};
    for (const auto& [offset, percent] : rows)
        EXPECT_EQ(sameWindowPercent(&before, after(offset)), percent) << offset;
}

TEST(WindowAnchors, resetTimesAtTheEndsOfTheCalendarRollOverLikeOthers)
{
    const auto rolls = [](Instant anchor, Instant reported) {
        const Usage usage = reading({weekly(1, reported)});
        return found({{{"weekly_all"}, {anchor, "weekly"}}}, usage);
    };
    EXPECT_TRUE(rolls(yearLast, yearOne).empty());
    const auto all = rolls(yearOne, yearLast);
    ASSERT_EQ(all.size(), 1);
    EXPECT_EQ(all[0].key, id + "|reset|weekly_all|-62135596800");
    EXPECT_TRUE(all[0].isStale);
}

TEST(WindowAnchors, aGraceThatIsNoNumberMakesNothingStaleAndAnInfiniteOneNeither)
{
    for (const double grace :
         {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
        const auto all =
            found({{{"session"}, {morning, "session"}}}, reading({}, after(week)), grace);
        ASSERT_EQ(all.size(), 1);
        EXPECT_FALSE(all[0].isStale);
    }
}

} // namespace
} // namespace vellumor::windowAnchorsTest
