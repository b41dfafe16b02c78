#include "history/HistoryChart.h"

#include "base/LocalTime.h"
#include "support/FakeClock.h"
#include "support/ScopedZone.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace vellumor::historyChartTest {

using HistoryChart::Curve;
using HistoryChart::Point;
using HistoryChart::Points;
using test::instant;
using test::ScopedZone;

namespace {

using namespace std::chrono_literals;
using Ticks = std::vector<double>;

constexpr std::chrono::seconds week(604800);

const Instant start = instant("2026-03-01T09:30:00.125Z");
const TimeSpan span{start, start + 1000s};

UsageSample session(std::chrono::microseconds after, double percent = 50)
{
    return {start + after, {{"session", percent}}};
}

// One sample a hundred seconds with the percents of a list.
UsageSamples going(const std::vector<double>& percents)
{
    UsageSamples samples;
    for (const double percent : percents)
        samples.push_back(session(100s * samples.size(), percent));
    return samples;
}

// Points side by side with those heights.
Points heights(const std::vector<double>& ys)
{
    Points points;
    for (const double y : ys)
        points.push_back({static_cast<double>(points.size()), y});
    return points;
}

std::vector<double> heightsOf(const Points& points)
{
    std::vector<double> ys;
    for (const Point& point : points)
        ys.push_back(point.y);
    return ys;
}

std::vector<double> placesOf(const Points& points)
{
    std::vector<double> xs;
    for (const Point& point : points)
        xs.push_back(point.x);
    return xs;
}

// The moments at which days begin, as texts.
std::vector<std::string> daysIn(const TimeSpan& of)
{
    std::vector<std::string> days;
    for (const double x : HistoryChart::dayBoundaries(of)) {
        const double after = std::round(x * of.seconds());
        EXPECT_NEAR(x * of.seconds(), after, 1e-6);
        days.push_back(Format::isoWholeSeconds(
            of.start + std::chrono::seconds(static_cast<std::int64_t>(after))));
    }
    return days;
}

} // namespace

TEST(HistoryChart, aSegmentRunsAlongTheSpan)
{
    const UsageSamples samples = {session(0s, 10), session(250s, 20), session(500s, 30)};
    // Half of the span is worth 40 points, so all three stay; the one between is between already.
    EXPECT_EQ(HistoryChart::segments(samples, "session", span),
              (std::vector<Points>{{{0, 10}, {0.25, 20}, {0.5, 30}}}));
    EXPECT_TRUE(HistoryChart::segments(samples, "weekly_all", span).empty());
    EXPECT_TRUE(HistoryChart::segments({}, "session", span).empty());
    EXPECT_TRUE(HistoryChart::segments({session(0s)}, "session", span).empty());
}

TEST(HistoryChart, aSpanWithoutLengthShowsNothing)
{
    const auto samples = going({10, 50, 10, 50});
    for (const TimeSpan& none : {TimeSpan{start, start}, TimeSpan{start + 500s, start}}) {
        EXPECT_TRUE(HistoryChart::segments(samples, "session", none).empty());
        EXPECT_TRUE(HistoryChart::resetTicks(samples, "session", none).empty());
        EXPECT_TRUE(HistoryChart::dayBoundaries(none).empty());
    }
}

TEST(HistoryChart, aRunNeedsTwoPointsWithinTheSpanAndBoundsCount)
{
    const auto sizes = [](const UsageSamples& samples) {
        std::vector<std::size_t> each;
        for (const Points& points : HistoryChart::segments(samples, "session", span))
            each.push_back(points.size());
        return each;
    };
    using Sizes = std::vector<std::size_t>;
    EXPECT_EQ(sizes({session(-1us), session(0s), session(1s)}), Sizes{2});
    EXPECT_EQ(sizes({session(-1s), session(0s)}), Sizes());
    EXPECT_EQ(sizes({session(999s), session(1000s), session(1000s + 1us)}), Sizes{2});
    EXPECT_EQ(sizes({session(1000s), session(1001s)}), Sizes());
    // Two runs, of which the first has but one point in the span.
    EXPECT_EQ(sizes({session(-100s), session(0s), session(400s), session(500s), session(600s)}),
              Sizes{3});
}

TEST(HistoryChart, aHoleParts)
{
    const UsageSamples samples = {session(0s),   session(100s), session(200s),
                                  session(700s), session(800s), session(900s)};
    const auto segments = HistoryChart::segments(samples, "session", span);
    ASSERT_EQ(segments.size(), 2U);
    EXPECT_EQ(placesOf(segments[0]), (std::vector{0.0, 0.1, 0.2}));
    EXPECT_EQ(placesOf(segments[1]), (std::vector{0.7, 0.8, 0.9}));
}

TEST(HistoryChart, aPercentIsDrawnFromZeroToAHundred)
{
    constexpr double infinite = std::numeric_limits<double>::infinity();
    const std::pair<double, double> rows[] = {
        {0, 0},      {100, 100},      {100.5, 100},   {1e300, 100}, {-0.5, 0},
        {-1e300, 0}, {infinite, 100}, {-infinite, 0}, {99.5, 99.5}, {std::nan(""), 0},
    };
    for (const auto& [percent, y] : rows) {
        const UsageSamples samples = {session(0s, percent), session(500s, percent)};
        EXPECT_EQ(HistoryChart::segments(samples, "session", span),
                  (std::vector<Points>{{{0, y}, {0.5, y}}}))
            << percent;
    }
}

// A long plateau is thinned to its share of eighty points.
TEST(HistoryChart, pointsAreThinnedToEightyForTheWholeSpan)
{
    const std::pair<int, std::size_t> rows[] = {
        // seconds of a run with a point each, and what stays of its points
        {1000, 80}, {999, 79}, {500, 40}, {499, 39}, {38, 3}, {37, 2}, {25, 2}, {12, 2}, {1, 2},
    };
    for (const auto& [seconds, expected] : rows) {
        SCOPED_TRACE(seconds);
        UsageSamples samples;
        for (int second = 0; second <= seconds; ++second)
            samples.push_back(session(std::chrono::seconds(second), 0.001 * second));
        const auto segments = HistoryChart::segments(samples, "session", span);
        ASSERT_EQ(segments.size(), 1U);
        EXPECT_EQ(segments[0].size(), expected);
        EXPECT_EQ(segments[0].front(), (Point{0, 0}));
        EXPECT_EQ(segments[0].back().x, seconds / 1000.0);
    }
}

// A thousand samples in which one fall hides: both its sides stay, wherever it is.
TEST(HistoryChart, aResetIsNeverThinnedAway)
{
    for (const int place : {1, 2, 17, 500, 998, 999}) {
        SCOPED_TRACE(place);
        UsageSamples samples;
        for (int second = 0; second < 1000; ++second)
            samples.push_back(session(std::chrono::seconds(second), second < place ? 60 : 58.9));
        const auto segments = HistoryChart::segments(samples, "session", span);
        ASSERT_EQ(segments.size(), 1U);
        for (const Point& edge : {Point{(place - 1) / 1000.0, 60}, Point{place / 1000.0, 58.9}})
            EXPECT_EQ(std::ranges::count(segments[0], edge), 1) << edge.x;
        EXPECT_TRUE(std::ranges::is_sorted(segments[0], {}, &Point::x));
        EXPECT_LE(segments[0].size(), 81U);
    }
}

TEST(HistoryChart, thinningToEnoughPointsChangesNothingAndToTwoLeavesTheEnds)
{
    const Points five = heights({0, 4, 1, 9, 2});
    for (const std::size_t count : {0U, 1U, 5U, 6U, 1000U})
        EXPECT_EQ(HistoryChart::downsample(five, count), five) << count;
    EXPECT_EQ(HistoryChart::downsample(five, 2), (Points{{0, 0}, {4, 2}}));
    EXPECT_EQ(HistoryChart::downsample({}, 3), Points());
    EXPECT_EQ(HistoryChart::downsample(heights({7}), 2), heights({7}));
    EXPECT_EQ(HistoryChart::downsample(heights({7, 8}), 2), heights({7, 8}));
}

TEST(HistoryChart, ofEachBucketThePointWithTheLargestTriangleStays)
{
    const struct {
        const char* what;
        std::vector<double> ys;
        std::size_t count;
        std::vector<double> places;
    } rows[] = {
        {"the highest of one bucket", {0, 1, 10, 2, 0}, 3, {0, 2, 4}},
        {"the lowest", {0, 1, -10, 2, 0}, 3, {0, 2, 4}},
        {"the first of equal ones", {0, 10, 10, 10, 0}, 3, {0, 1, 4}},
        {"the first of a line", {0, 1, 2, 3, 4}, 3, {0, 1, 4}},
        {"one of each of two buckets", {0, 0, 10, 10, 0, 0}, 4, {0, 2, 3, 5}},
        // Seen from (0, 0), the mean of the next bucket is (3.5, 10): the point below the line
        // wins.
        {"by the mean of the next", {0, 6, 0, 10, 10, 10}, 4, {0, 2, 3, 5}},
        // Buckets of two and a half: 1 and 2, then 3, 4 and 5.
        {"uneven", {0, 0, 8, 0, 0, 9, 0}, 4, {0, 2, 5, 6}},
        {"uneven, early", {0, 8, 0, 9, 0, 0, 0}, 4, {0, 1, 3, 6}},
    };
    for (const auto& [what, ys, count, places] : rows) {
        SCOPED_TRACE(what);
        EXPECT_EQ(placesOf(HistoryChart::downsample(heights(ys), count)), places);
    }
}

TEST(HistoryChart, jitterIsCalmedInTwoPassesThatReadWhatTheyWrite)
{
    EXPECT_EQ(heightsOf(HistoryChart::relaxed(heights({0, 0, 4, 4, 8, 8}))),
              (std::vector{0.0, 1.3125, 3.15625, 5.1953125, 8.0, 8.0}));
    EXPECT_EQ(placesOf(HistoryChart::relaxed(heights({0, 0, 4, 4, 8, 8}))),
              (std::vector{0.0, 1.0, 2.0, 3.0, 4.0, 5.0}));
}

TEST(HistoryChart, whatMattersIsNotCalmed)
{
    const std::pair<std::vector<double>, std::vector<double>> rows[] = {
        {{}, {}},
        {{3}, {3}},
        {{3, 90}, {3, 90}},
        {{0, 50, 0}, {0, 50, 0}},         // the highest
        {{50, 0, 50}, {50, 0, 50}},       // behind a fall
        {{0, 9, 9, 1.5}, {0, 9, 9, 1.5}}, // the first of the highest, and a fall
        {{10, 9, 10}, {10, 9.75, 10}},    // a fall of one is jitter
        {{10, 8.9, 10}, {10, 8.9, 10}},   // and of more is none
        {{0, 1, 9, 9}, {0, 3.625, 9, 9}},
    };
    for (const auto& [ys, expected] : rows) {
        SCOPED_TRACE(testing::PrintToString(ys));
        EXPECT_EQ(heightsOf(HistoryChart::relaxed(heights(ys))), expected);
    }
}

TEST(HistoryChart, tangentsFollowTheSlopesWithinWhatKeepsACurveMonotone)
{
    const double limited = 3 / std::sqrt(1 + 5.5 * 5.5);
    const std::pair<std::vector<double>, std::vector<double>> rows[] = {
        {{}, {}},
        {{5}, {0}},
        {{5, 8}, {3, 3}},
        {{5, 5}, {0, 0}},
        {{0, 1, 2, 3}, {1, 1, 1, 1}},
        {{0, 1, 3}, {1, 1.5, 2}},
        {{3, 1, 0}, {-2, -1.5, -1}},
        {{0, 2, 0}, {2, 0, -2}},      // a turn
        {{4, 4, 4, 4}, {0, 0, 0, 0}}, // a flat stretch
        {{0, 1, 1, 4}, {1, 0, 0, 3}}, // and one in between
        {{0, 1, 11}, {limited, 5.5 * limited, 10}},
        {{11, 10, 0}, {-limited, -5.5 * limited, -10}},
    };
    for (const auto& [ys, expected] : rows) {
        SCOPED_TRACE(testing::PrintToString(ys));
        const auto tangents = HistoryChart::monotoneTangents(heights(ys));
        ASSERT_EQ(tangents.size(), expected.size());
        for (std::size_t i = 0; i < expected.size(); ++i)
            EXPECT_NEAR(tangents[i], expected[i], 1e-12) << i;
    }
    const auto spread = HistoryChart::monotoneTangents({{0, 0}, {0.5, 1}, {0.75, 2}});
    EXPECT_EQ(spread, (std::vector{2.0, 3.0, 4.0}));
}

TEST(HistoryChart, aCurveLeavesAndArrivesByItsTangents)
{
    EXPECT_TRUE(HistoryChart::curves({}).empty());
    EXPECT_TRUE(HistoryChart::curves({{0.5, 5}}).empty());
    EXPECT_EQ(HistoryChart::curves({{0, 0}, {0.375, 30}}),
              (std::vector<Curve>{{{0, 0}, {0.125, 10}, {0.25, 20}, {0.375, 30}}}));
    const std::vector<Curve> expected = {{{0, 0}, {1, 1}, {2, 1.5}, {3, 3}},
                                         {{3, 3}, {4, 4.5}, {5, 7}, {6, 9}}};
    EXPECT_EQ(HistoryChart::curves({{0, 0}, {3, 3}, {6, 9}}), expected);
    const auto flat = HistoryChart::curves(heights({7, 7, 7}));
    ASSERT_EQ(flat.size(), 2U);
    for (const Curve& curve : flat)
        EXPECT_EQ(heightsOf({curve.p0, curve.c1, curve.c2, curve.p1}), (std::vector(4, 7.0)));
}

TEST(HistoryChart, pointsAboveOneAnotherAreJoinedByALine)
{
    const auto curves = HistoryChart::curves({{0, 0}, {0.5, 10}, {0.5, 90}, {1, 100}});
    ASSERT_EQ(curves.size(), 3U);
    EXPECT_EQ(curves[1], (Curve{{0.5, 10}, {0.5, 10}, {0.5, 90}, {0.5, 90}}));
}

// A percent may be the smallest number that there is, and the next one ninety.
TEST(HistoryChart, aSlopeNextToNoneGivesNumbers)
{
    for (const double tiny : {5e-324, 1e-310, 1e-200, 1e-160}) {
        for (const double tangent : HistoryChart::monotoneTangents(heights({0, tiny, 90})))
            EXPECT_TRUE(std::isfinite(tangent)) << tiny;
        for (const double tangent : HistoryChart::monotoneTangents(heights({-90, -tiny, 0})))
            EXPECT_TRUE(std::isfinite(tangent)) << tiny;
    }
}

TEST(HistoryChart, aResetIsMarkedWhereItWasSeen)
{
    const UsageSamples samples = {session(-500s, 60), session(0s, 1),     session(250s, 60),
                                  session(500s, 59),  session(750s, 70),  session(900s, 60),
                                  session(950s, 90),  session(1000s, 80), session(1100s, 3)};
    EXPECT_EQ(HistoryChart::resetTicks(samples, "session", span), (Ticks{0, 0.9, 1}));
    EXPECT_TRUE(HistoryChart::resetTicks(samples, "weekly_all", span).empty());
    EXPECT_TRUE(HistoryChart::resetTicks({}, "session", span).empty());
    // In the order of time, over what another kind has in between, and above what can be drawn.
    const UsageSamples unsorted = {session(750s, 200),
                                   session(250s, 10),
                                   session(0s, 300),
                                   {start + 100s, {{"weekly_all", 0}}},
                                   session(1000s, 198.5)};
    EXPECT_EQ(HistoryChart::resetTicks(unsorted, "session", span), (Ticks{0.25, 1}));
}

TEST(HistoryChart, daysBeginStrictlyWithinTheSpan)
{
    const ScopedZone utc("UTC");
    const Instant midnight = instant("2026-11-14T00:00:00Z");
    EXPECT_EQ(HistoryChart::dayBoundaries({midnight, midnight + week}),
              (Ticks{1.0 / 7, 2.0 / 7, 3.0 / 7, 4.0 / 7, 5.0 / 7, 6.0 / 7}));
    EXPECT_EQ(HistoryChart::dayBoundaries({midnight - 1s, midnight - 1s + week}).size(), 7U);
    EXPECT_EQ(HistoryChart::dayBoundaries({midnight + 1s, midnight + 1s + week}).size(), 7U);
    EXPECT_EQ(HistoryChart::dayBoundaries({midnight - 12h, midnight + 12h}), Ticks{0.5});
    EXPECT_EQ(HistoryChart::dayBoundaries({midnight + 1h, midnight + 2h}), Ticks());
}

TEST(HistoryChart, daysBeginWhereTheZoneHasThem)
{
    using Days = std::vector<std::string>;
    const struct {
        const char* zone;
        const char* start;
        Days days;
    } rows[] = {
        {"Asia/Kolkata", "2026-11-18T18:30:00Z", {"2026-11-19T18:30:00Z", "2026-11-20T18:30:00Z"}},
        {"Asia/Kolkata",
         "2026-11-18T18:29:59Z",
         {"2026-11-18T18:30:00Z", "2026-11-19T18:30:00Z", "2026-11-20T18:30:00Z"}},
        // A day of 23 hours, and one of 25.
        {"Europe/Berlin",
         "2026-03-28T12:00:00Z",
         {"2026-03-28T23:00:00Z", "2026-03-29T22:00:00Z", "2026-03-30T22:00:00Z"}},
        {"Europe/Berlin",
         "2026-10-24T12:00:00Z",
         {"2026-10-24T22:00:00Z", "2026-10-25T23:00:00Z", "2026-10-26T23:00:00Z"}},
        {"America/New_York",
         "2026-03-07T12:00:00Z",
         {"2026-03-08T05:00:00Z", "2026-03-09T04:00:00Z", "2026-03-10T04:00:00Z"}},
        // Half an hour more or less.
        {"Australia/Lord_Howe",
         "2026-04-04T00:00:00Z",
         {"2026-04-04T13:00:00Z", "2026-04-05T13:30:00Z", "2026-04-06T13:30:00Z"}},
        // Where the clocks go from midnight to one.
        {"Africa/Cairo",
         "2026-04-23T12:00:00Z",
         {"2026-04-23T22:00:00Z", "2026-04-24T21:00:00Z", "2026-04-25T21:00:00Z"}},
        // Where they go from one back to midnight: the first of the two.
        {"America/Havana",
         "2026-10-31T12:00:00Z",
         {"2026-11-01T04:00:00Z", "2026-11-02T05:00:00Z", "2026-11-03T05:00:00Z"}},
    };
    for (const auto& [zone, from, days] : rows) {
        SCOPED_TRACE(std::string(zone) + " " + from);
        const ScopedZone scoped(zone);
        EXPECT_EQ(daysIn({instant(from), instant(from) + 72h}), days);
    }
}

// Seven, or one more or less where a day is shorter or longer.
TEST(HistoryChart, aWeekHasAsManyDayBoundariesAsTheCalendarCounts)
{
    for (const char* zone : {"UTC", "Asia/Kolkata", "Europe/Berlin", "America/New_York",
                             "Australia/Lord_Howe", "Africa/Cairo"}) {
        const ScopedZone scoped(zone);
        for (int hours = 0; hours < 24 * 366; hours += 7) {
            const Instant from = instant("2026-01-01T00:10:00Z") + std::chrono::hours(hours);
            const auto days = HistoryChart::dayBoundaries({from, from + week});
            ASSERT_TRUE(LocalTime::isDaysAfter(from + week, static_cast<int>(days.size()), from))
                << zone << " " << hours << ": " << days.size();
            for (std::size_t i = 1; i < days.size(); ++i)
                ASSERT_NEAR(days[i] - days[i - 1], 1.0 / 7, 1.001 / 168) << zone << " " << hours;
        }
    }
}

} // namespace vellumor::historyChartTest
