#include "history/Sparkline.h"

#include "support/FakeClock.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace vellumor::sparklineTest {

using test::instant;

namespace {

using namespace std::chrono_literals;

const Instant start = instant("2026-03-01T09:30:00.125Z");

UsageSample session(std::chrono::microseconds after, double percent = 50)
{
    return {start + after, {{"session", percent}}};
}

UsageSample weekly(std::chrono::microseconds after, double percent = 50)
{
    return {start + after, {{"weekly_all", percent}}};
}

// One each at these seconds.
UsageSamples samplesAt(const std::vector<int>& seconds)
{
    UsageSamples samples;
    for (const int second : seconds)
        samples.push_back(session(std::chrono::seconds(second)));
    return samples;
}

// How many points stand in each run.
std::vector<std::size_t> sizesOf(const std::vector<Sparkline::Run>& runs)
{
    std::vector<std::size_t> sizes;
    for (const Sparkline::Run& run : runs)
        sizes.push_back(run.size());
    return sizes;
}

} // namespace

TEST(Sparkline, theThresholdIsTwiceTheUpperMedianOfTheSpacingsAboveZero)
{
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    const std::pair<std::vector<double>, std::optional<double>> rows[] = {
        {{}, std::nullopt},
        {{0}, std::nullopt},
        {{-5, 0, -0.0}, std::nullopt},
        {{nan}, std::nullopt},
        {{600}, 1200},
        {{0.001}, 0.002},
        {{1, 2}, 4},
        {{2, 1}, 4},
        {{1, 2, 3}, 4},
        {{3, 1, 2}, 4},
        {{10, 20, 30, 40}, 60},
        {{40, 20, 10, 30}, 60},
        {{300, 300, 3600}, 600},
        {{300, 3600, 3600}, 7200},
        {{-100, 0, 10, -7, 20}, 40},
        {{nan, 10, nan}, 20},
    };
    for (const auto& [spacings, threshold] : rows) {
        SCOPED_TRACE(testing::PrintToString(spacings));
        EXPECT_EQ(Sparkline::gapThreshold(spacings), threshold);
    }
}

TEST(Sparkline, spacingsAreThoseOfTheOrderInWhichTheSamplesStand)
{
    const std::pair<std::vector<int>, std::optional<double>> rows[] = {
        {{}, std::nullopt},          {{0}, std::nullopt},    {{0, 600}, 1200},
        {{600, 0}, std::nullopt},    {{5, 5}, std::nullopt}, {{0, 300, 600, 4200}, 600},
        {{0, 300, 100, 900}, 1600}, // 300, back, 800: and not 100, 200, 600
        {{900, 600, 300, 400}, 200},
    };
    for (const auto& [seconds, threshold] : rows) {
        SCOPED_TRACE(testing::PrintToString(seconds));
        EXPECT_EQ(Sparkline::gapThreshold(samplesAt(seconds)), threshold);
    }
}

TEST(Sparkline, theThresholdOfSamplesCountsWhateverTheirKindsAre)
{
    const UsageSamples samples = {session(0s), {start + 100s, {}}, weekly(200s), session(300s)};
    EXPECT_EQ(Sparkline::gapThreshold(samples), 200);
}

TEST(Sparkline, fewerThanTwoPointsAreNoRun)
{
    EXPECT_TRUE(Sparkline::runs({}, "session").empty());
    EXPECT_TRUE(Sparkline::runs({session(0s)}, "session").empty());
    EXPECT_TRUE(Sparkline::runs({session(0s), weekly(60s), weekly(120s)}, "session").empty());
    EXPECT_TRUE(Sparkline::runs({session(0s), session(60s)}, "weekly_all").empty());
    EXPECT_EQ(sizesOf(Sparkline::runs({session(0s), session(60s)}, "session")),
              std::vector<std::size_t>{2});
}

TEST(Sparkline, aSpacingOfExactlyTheThresholdIsNoHoleAndAMicrosecondMoreIsOne)
{
    UsageSamples samples = {session(0s), session(300s), session(600s), session(900s),
                            session(1500s)};
    EXPECT_EQ(sizesOf(Sparkline::runs(samples, "session")), std::vector<std::size_t>{5});
    samples.back().at += 1us;
    EXPECT_EQ(sizesOf(Sparkline::runs(samples, "session")), (std::vector<std::size_t>{4, 1}));
}

TEST(Sparkline, aHoleEndsWhereANewRunBegins)
{
    using Holes = std::vector<std::size_t>;
    const std::pair<std::vector<int>, Holes> rows[] = {
        {{}, {}},
        {{5}, {}},
        {{0, 9000}, {}},
        {{0, 54, 120, 174, 240}, {}}, // a tenth more or less
        {{0, 60, 120, 3720, 3780, 3840}, {3}},
        {{0, 3600, 3660, 3720, 3780}, {1}}, // the first spacing is none to judge by
        {{0, 60, 120, 240, 300}, {}},       // exactly twice
        {{0, 60, 120, 241, 301}, {3}},      // and more
        {{0, 1, 2, 902, 1802, 2702, 4503}, {6}},
        {{0, 60, 0, 60, 0, 3600}, {5}}, // spacings below zero do not count
        {{5, 5, 5, 5}, {}},
        {{9, 6, 3}, {}},
    };
    for (const auto& [seconds, holes] : rows) {
        SCOPED_TRACE(testing::PrintToString(seconds));
        std::vector<Instant> moments;
        for (const int second : seconds)
            moments.push_back(start + std::chrono::seconds(second));
        EXPECT_EQ(Sparkline::holes(moments), holes);
    }
}

TEST(Sparkline, aRunHoldsItsPointsWithTheirPercents)
{
    const UsageSamples samples = {session(0s, 10),   weekly(30s, 99),    session(60s, 120),
                                  session(120s, -3), session(1000s, 40), session(1060s, 0)};
    const std::vector<Sparkline::Run> expected = {
        {{start, 10}, {start + 60s, 120}, {start + 120s, -3}},
        {{start + 1000s, 40}, {start + 1060s, 0}}};
    EXPECT_EQ(Sparkline::runs(samples, "session"), expected);
}

// A window that is seldom there has a cadence of its own.
TEST(Sparkline, holesAreJudgedByTheSamplesOfTheKindAlone)
{
    UsageSamples samples;
    for (int minute = 0; minute < 40; ++minute) {
        samples.push_back(session(std::chrono::minutes(minute)));
        if (minute % 10 == 0)
            samples.back().percents.set("weekly_all", 5);
    }
    EXPECT_EQ(sizesOf(Sparkline::runs(samples, "weekly_all")), std::vector<std::size_t>{4});
}

TEST(Sparkline, withoutAThresholdThereIsOneRun)
{
    for (const auto& seconds : std::vector<std::vector<int>>{{5, 5, 5}, {9000, 60, 0}, {1, 1}}) {
        const auto runs = Sparkline::runs(samplesAt(seconds), "session");
        EXPECT_EQ(sizesOf(runs), std::vector<std::size_t>{seconds.size()});
    }
}

TEST(Sparkline, aClockThatWasSetBackPartsNothing)
{
    const auto runs = Sparkline::runs(samplesAt({0, 300, 600, -90000, -89700, -89400}), "session");
    EXPECT_EQ(sizesOf(runs), std::vector<std::size_t>{6});
    EXPECT_EQ(runs.at(0).at(3).at, start - 90000s);
}

TEST(Sparkline, aFallOfUpToOnePointIsRounding)
{
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    const struct {
        double before;
        double after;
        bool isReset;
    } rows[] = {
        {60, 60, false},
        {60, 61, false},
        {60, 59.5, false},
        {60, 59, false},
        {60, std::nextafter(59.0, 0.0), true},
        {60, 58.9, true},
        {1, 0, false},
        {1.5, 0, true},
        {100, 0, true},
        {0, -1, false},
        {0, -1.5, true},
        {1e300, 0, true},
        {nan, 0, false},
        {60, nan, false},
    };
    for (const auto& [before, after, isReset] : rows)
        EXPECT_EQ(Sparkline::isReset(before, after), isReset) << before << " to " << after;
}

TEST(Sparkline, pointsAreSortedByTheirTimeAndThoseOfOneMomentKeepTheirOrder)
{
    const UsageSamples samples = {session(60s, 1), weekly(10s),    session(0s, 2),
                                  session(60s, 3), session(0s, 4), session(60s, 0)};
    const Sparkline::Run expected = {
        {start, 2}, {start, 4}, {start + 60s, 1}, {start + 60s, 3}, {start + 60s, 0}};
    EXPECT_EQ(Sparkline::sortedPoints(samples, "session"), expected);
    EXPECT_EQ(Sparkline::sortedPoints(samples, "other"), Sparkline::Run());
}

} // namespace vellumor::sparklineTest
