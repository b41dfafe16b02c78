#include "history/HistoryCoverage.h"

#include "history/Sparkline.h"
#include "support/FakeClock.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace vellumor::historyCoverageTest {

using HistoryCoverage::Segment;
using test::instant;

namespace {

using namespace std::chrono_literals;
using Seconds = std::vector<std::pair<double, double>>; // stretches from the start

const Instant start = instant("2026-03-01T09:30:00.125Z");
const TimeSpan hour{start, start + 3600s};

UsageSample session(std::chrono::microseconds after, double percent = 50)
{
    return {start + after, {{"session", percent}}};
}

UsageSamples samplesAt(const std::vector<int>& seconds)
{
    UsageSamples samples;
    for (const int second : seconds)
        samples.push_back(session(std::chrono::seconds(second)));
    return samples;
}

// One sample every five minutes with the percents of a list.
UsageSamples going(const std::vector<double>& percents)
{
    UsageSamples samples;
    for (const double percent : percents)
        samples.push_back(session(300s * samples.size(), percent));
    return samples;
}

Seconds covered(const UsageSamples& samples, const TimeSpan& span)
{
    Seconds seconds;
    for (const TimeSpan& stretch : HistoryCoverage::coveredIntervals(samples, span))
        seconds.emplace_back(secondsBetween(start, stretch.start),
                             secondsBetween(start, stretch.end));
    return seconds;
}

} // namespace

TEST(HistoryCoverage, aStretchIsWatchedWhereNeighboursStandCloseEnough)
{
    const struct {
        const char* what;
        std::vector<int> seconds;
        Seconds covered;
    } rows[] = {
        {"nothing", {}, {}},
        {"one", {60}, {}},
        {"two of one moment", {60, 60}, {}},
        {"two", {600, 1200}, {{600, 1200}}},
        {"a hole", {0, 300, 600, 4200, 4500, 4800}, {{0, 600}}},
        {"a hole within", {0, 300, 600, 3000, 3300, 3600}, {{0, 600}, {3000, 3600}}},
        {"a spacing of the limit", {0, 300, 600, 1200, 1500}, {{0, 1500}}},
        {"a second more", {0, 300, 600, 1201, 1501}, {{0, 600}, {1201, 1501}}},
        {"over the start", {-200, 100}, {{0, 100}}},
        {"over the end", {3500, 3700}, {{3500, 3600}}},
        {"over both", {-5000, 9000}, {{0, 3600}}},
        {"up to the start", {-300, 0}, {}},
        {"from the end on", {3600, 3900}, {}},
        {"before and behind", {-900, -600, 4000, 4300}, {}},
        {"backwards", {600, 300, 0}, {}}, // no spacing above zero tells a cadence
        {"unsorted", {600, 0, 300, 900}, {{0, 900}}},
        {"by the cadence as it was appended", {0, 10, 600, 590}, {{0, 600}}},
    };
    for (const auto& [what, seconds, expected] : rows) {
        SCOPED_TRACE(what);
        EXPECT_EQ(covered(samplesAt(seconds), hour), expected);
    }
}

TEST(HistoryCoverage, samplesWithoutPercentsWereWatchedToo)
{
    EXPECT_EQ(covered({{start, {}}, {start + 60s, {}}}, hour), (Seconds{{0, 60}}));
}

TEST(HistoryCoverage, theFractionIsWhatWasWatchedOfTheSpan)
{
    EXPECT_EQ(HistoryCoverage::fraction({}, hour), 0.0);
    EXPECT_EQ(HistoryCoverage::fraction(samplesAt({0}), hour), 0.0);
    EXPECT_EQ(HistoryCoverage::fraction(samplesAt({0, 900}), hour), 0.25);
    EXPECT_EQ(HistoryCoverage::fraction(samplesAt({-900, 900}), hour), 0.25);
    EXPECT_EQ(HistoryCoverage::fraction(samplesAt({0, 300, 600, 3000, 3300, 3600}), hour),
              1200.0 / 3600.0);
    EXPECT_EQ(HistoryCoverage::fraction(samplesAt({0, 3600}), hour), 1.0);
    EXPECT_EQ(HistoryCoverage::fraction(samplesAt({-7200, 7200}), hour), 1.0);
}

TEST(HistoryCoverage, aSpanWithoutLengthWasNotWatched)
{
    const auto samples = samplesAt({-300, 0, 300, 600});
    for (const TimeSpan& span : {TimeSpan{start, start}, TimeSpan{start + 300s, start}}) {
        EXPECT_EQ(HistoryCoverage::fraction(samples, span), 0.0);
        EXPECT_TRUE(HistoryCoverage::stripSegments(samples, span).empty());
        EXPECT_TRUE(HistoryCoverage::coveredIntervals(samples, span).empty());
    }
}

TEST(HistoryCoverage, theStripHasTheStretchesAlongTheSpan)
{
    EXPECT_EQ(HistoryCoverage::stripSegments(samplesAt({-900, 0, 900, 2700, 3600, 4500}),
                                             {start, start + 3600s}),
              (std::vector<Segment>{{0.0, 1.0}}));
    EXPECT_EQ(HistoryCoverage::stripSegments(samplesAt({-100, 450, 900, 2700, 3150, 4000}), hour),
              (std::vector<Segment>{{0.0, 0.25}, {0.75, 1.0}}));
    EXPECT_TRUE(HistoryCoverage::stripSegments({}, hour).empty());
}

// Against a model that looks at each minute by itself.
TEST(HistoryCoverage, whateverTheSamplesTheMinutesThatWereWatchedAddUp)
{
    constexpr int minutes = 400;
    std::mt19937_64 random(20260301);
    for (int round = 0; round < 300; ++round) {
        SCOPED_TRACE(round);
        std::vector<int> at(random() % 60);
        for (int& minute : at)
            minute = static_cast<int>(random() % (2 * minutes)) - minutes / 2;
        if (round % 2 == 0)
            std::ranges::sort(at);
        UsageSamples samples;
        for (const int minute : at)
            samples.push_back(session(std::chrono::minutes(minute)));
        const auto limit = Sparkline::gapThreshold(samples);
        std::ranges::sort(at);
        int watched = 0;
        for (int minute = 0; minute < minutes; ++minute) {
            const auto behind = std::ranges::upper_bound(at, minute);
            if (limit && behind != at.begin() && behind != at.end() &&
                (*behind - *(behind - 1)) * 60 <= *limit)
                ++watched;
        }
        const TimeSpan span{start, start + std::chrono::minutes(minutes)};
        EXPECT_NEAR(HistoryCoverage::fraction(samples, span), watched / double(minutes), 1e-12);
        Instant last = span.start - 1us;
        for (const TimeSpan& stretch : HistoryCoverage::coveredIntervals(samples, span)) {
            EXPECT_LT(last, stretch.start); // neither overlapping nor touching
            EXPECT_LT(stretch.start, stretch.end);
            EXPECT_LE(stretch.end, span.end);
            last = stretch.end;
        }
    }
}

TEST(HistoryCoverage, thePeakIsTheHighestAndOfEqualOnesTheFirst)
{
    const auto samples = going({10, 60, 20, 60, 30});
    EXPECT_EQ(HistoryCoverage::peak(samples, "session", hour),
              (HistoryCoverage::Peak{60, start + 300s}));
    EXPECT_EQ(HistoryCoverage::peak(samples, "weekly_all", hour), std::nullopt);
    EXPECT_EQ(HistoryCoverage::peak({}, "session", hour), std::nullopt);
    const UsageSamples unsorted = {session(900s, 7), session(300s, 7)};
    EXPECT_EQ(HistoryCoverage::peak(unsorted, "session", hour)->at, start + 900s);
    const auto below = going({-5, -3, -4});
    EXPECT_EQ(HistoryCoverage::peak(below, "session", hour)->percent, -3);
}

TEST(HistoryCoverage, bothBoundsOfTheSpanCountForThePeak)
{
    const UsageSamples samples = {session(-1us, 99), session(0s, 10), session(60s, 20),
                                  session(3600s, 30), session(3600s + 1us, 99)};
    EXPECT_EQ(HistoryCoverage::peak(samples, "session", hour),
              (HistoryCoverage::Peak{30, start + 3600s}));
    EXPECT_EQ(HistoryCoverage::peak(samples, "session", {start, start}),
              (HistoryCoverage::Peak{10, start}));
    EXPECT_EQ(HistoryCoverage::peak(samples, "session", {start + 1s, start + 2s}), std::nullopt);
}

TEST(HistoryCoverage, aFallOfMoreThanOnePointIsAReset)
{
    const std::pair<std::vector<double>, int> rows[] = {
        {{}, 0},
        {{60}, 0},
        {{60, 59.5}, 0},
        {{60, 59}, 0},
        {{60, 58.9}, 1},
        {{60, 0, 60, 0}, 2},
        {{60, 59.2, 58.4, 57.6}, 0}, // sinks, but by little each time
        {{0, 50, 100, 3, 4, 2.5}, 2},
    };
    for (const auto& [percents, resets] : rows) {
        SCOPED_TRACE(testing::PrintToString(percents));
        EXPECT_EQ(HistoryCoverage::observedResets(going(percents), "session", std::nullopt),
                  resets);
        EXPECT_EQ(HistoryCoverage::observedResets(going(percents), "weekly_all", std::nullopt), 0);
    }
}

TEST(HistoryCoverage, samplesOfOtherKindsDoNotPartTheNeighbours)
{
    const UsageSamples samples = {
        session(0s, 60), {start + 60s, {{"weekly_all", 1}}}, {start + 90s, {}}, session(120s, 10)};
    EXPECT_EQ(HistoryCoverage::observedResets(samples, "session", std::nullopt), 1);
}

TEST(HistoryCoverage, aResetCountsWhereItsEndLies)
{
    const UsageSamples samples = {session(-300s, 60), session(0s, 1),     session(300s, 60),
                                  session(3600s, 2),  session(3700s, 70), session(3900s, 3)};
    EXPECT_EQ(HistoryCoverage::observedResets(samples, "session", std::nullopt), 3);
    EXPECT_EQ(HistoryCoverage::observedResets(samples, "session", hour), 2);
    EXPECT_EQ(HistoryCoverage::observedResets(samples, "session", TimeSpan{start + 1us, hour.end}),
              1);
    EXPECT_EQ(HistoryCoverage::observedResets(samples, "session", TimeSpan{start, hour.end - 1us}),
              1);
}

TEST(HistoryCoverage, resetsAreCountedInTheOrderOfTime)
{
    const UsageSamples samples = {session(600s, 5), session(0s, 50), session(300s, 60),
                                  session(300s, 40)};
    EXPECT_EQ(HistoryCoverage::observedResets(samples, "session", std::nullopt), 2);
}

} // namespace vellumor::historyCoverageTest
