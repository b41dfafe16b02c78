#include "history/Projection.h"

#include "support/FakeClock.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace vellumor::projectionEvaluateTest {
namespace {

using Eta = Projection::Eta;
using OnPace = Projection::OnPace;
using Points = Projection::Run;
using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr double week = 604800.0;
const Instant now = test::instant("2026-03-29T12:00:00Z");

// A weekly window of which `elapsed` (0 to 1) has gone.
LimitWindow weekly(double percent, double elapsed, const std::string& kind = "weekly_all")
{
    LimitWindow window;
    window.kind = kind;
    window.group = "weekly";
    window.percent = percent;
    window.resetsAt = now + milliseconds(std::llround(week * (1 - elapsed) * 1000));
    return window;
}

LimitWindow session(double percent, seconds sinceReset)
{
    LimitWindow window;
    window.kind = "session";
    window.group = "session";
    window.percent = percent;
    window.resetsAt = now + seconds(18000) - sinceReset;
    return window;
}

// Samples of one kind, given as seconds before now and percent.
UsageSamples history(const std::vector<std::pair<int, double>>& points,
                     const std::string& kind = "session")
{
    UsageSamples samples;
    for (const auto& [ago, percent] : points) {
        UsageSample sample;
        sample.at = now - seconds(ago);
        sample.percents.set(kind, percent);
        samples.push_back(std::move(sample));
    }
    return samples;
}

std::optional<Projection::Form> formOf(const LimitWindow& window, const UsageSamples& samples = {})
{
    const auto projection = Projection::evaluate({window}, samples, now);
    return projection ? std::optional(projection->form) : std::nullopt;
}

std::optional<std::size_t> runLength(const UsageSamples& samples)
{
    const auto run = Projection::trailingRun(samples, "session", now);
    return run ? std::optional(run->size()) : std::nullopt;
}

TEST(ProjectionEvaluate, thereIsNoneWithoutAWindowThatTellsItsReset)
{
    EXPECT_EQ(Projection::evaluate({}, {}, now), std::nullopt);
    LimitWindow window = weekly(50, 0.5);
    window.resetsAt.reset();
    EXPECT_EQ(formOf(window), std::nullopt);
    window = weekly(50, 0.5, "burst");
    window.group = "hourly";
    EXPECT_EQ(formOf(window), std::nullopt);
}

TEST(ProjectionEvaluate, aWindowMustHaveBegunAndNotBeFull)
{
    for (const double percent : {0.0, 0.9, 0.999, 100.0, 130.0})
        EXPECT_EQ(formOf(weekly(percent, 0.5)), std::nullopt) << percent;
    EXPECT_TRUE(formOf(weekly(1.0, 0.1)));
    EXPECT_TRUE(formOf(weekly(99.9, 0.5)));
}

TEST(ProjectionEvaluate, theFirstTwentiethOfAWindowSaysNothing)
{
    EXPECT_EQ(formOf(session(90, seconds(600))), std::nullopt);
    EXPECT_EQ(formOf(session(90, seconds(899))), std::nullopt);
    EXPECT_TRUE(formOf(session(90, seconds(900))));
}

TEST(ProjectionEvaluate, aResetThatHasPassedIsNoSpecialCase)
{
    const seconds passed(18060); // a minute more than a session lasts
    EXPECT_EQ(formOf(session(3, passed)), Projection::Form(OnPace{5}));
    EXPECT_EQ(formOf(session(60, passed)), std::nullopt);
}

TEST(ProjectionEvaluate, withoutHistoryTheWindowsAverageDecides)
{
    // 30 % in half of the week: 60 % at its end.
    EXPECT_EQ(formOf(weekly(30, 0.5)), Projection::Form(OnPace{60}));
    // 80 % in half of the week: full after another eighth.
    const auto form = formOf(weekly(80, 0.5));
    ASSERT_TRUE(form && std::holds_alternative<Eta>(*form));
    EXPECT_NEAR(secondsBetween(now, std::get<Eta>(*form).moment), week / 8, 0.001);
}

TEST(ProjectionEvaluate, theFigureIsAMultipleOfFiveUpToNinetyFiveAndBeyondTheUsage)
{
    const struct {
        double percent;
        double elapsed;
        std::optional<int> figure;
    } rows[] = {
        {30, 0.5, 60},   {31.2, 0.5, 60},     {31.25, 0.5, 65},        {48.75, 0.5, 95},
        {49.9, 0.5, 95}, {60, 60.0 / 61, {}}, {94.9, 94.9 / 97.5, 95}, {96, 96 / 97.5, {}},
        {1.0, 0.5, {}},  {2.5, 0.5, 5},
    };
    for (const auto& [percent, elapsed, figure] : rows) {
        const auto form = formOf(weekly(percent, elapsed));
        if (figure)
            EXPECT_EQ(form, Projection::Form(OnPace{*figure})) << percent;
        else
            EXPECT_EQ(form, std::nullopt) << percent;
    }
}

TEST(ProjectionEvaluate, theRecentClimbWeighsSevenTenths)
{
    // Half an hour into the session nothing, then 0.01 % a second.
    std::vector<std::pair<int, double>> points;
    for (int ago = 3000; ago >= 0; ago -= 300)
        points.emplace_back(ago, 0.01 * (3000 - ago) + 5);
    const LimitWindow window = session(35, seconds(9000));
    const double average = 35.0 / 9000;
    const double rate = (1.0 - 0.7) * average + 0.7 * 0.01;
    const auto form = formOf(window, history(points));
    ASSERT_TRUE(form && std::holds_alternative<Eta>(*form));
    EXPECT_NEAR(secondsBetween(now, std::get<Eta>(*form).moment), 65.0 / rate, 0.01);
    EXPECT_EQ(formOf(window), Projection::Form(OnPace{70})); // by the average alone
}

// A steep climb of fifty minutes, in which the window fell a little `fellAgo` seconds ago.
UsageSamples climb(int fellAgo = 3000)
{
    std::vector<std::pair<int, double>> points;
    for (int ago = 3000; ago >= 0; ago -= 300)
        points.emplace_back(ago, 0.01 * (3000 - ago) + (ago > fellAgo ? 9 : 5));
    return history(points);
}

TEST(ProjectionEvaluate, withoutARunOfFortyFiveMinutesTheAverageDecidesAlone)
{
    const LimitWindow window = session(35, seconds(9000));
    const auto alone = Projection::candidates({window}, {}, now);
    ASSERT_EQ(alone.size(), 1U);
    ASSERT_NE(Projection::candidates({window}, climb(), now), alone); // a run would tell
    EXPECT_EQ(Projection::candidates({window}, history({{0, 35}}), now), alone);
    EXPECT_EQ(Projection::candidates({window}, climb(1200), now), alone); // it fell since
}

// The estimate is just full, which the rounding of the weights decides: 1 - 0.7 is a little more
// than 0.3.
TEST(ProjectionEvaluate, theWeightOfTheAverageIsWhatSevenTenthsLeave)
{
    const struct {
        seconds sinceReset;
        double percent;
        double climbed;
    } rows[] = {{seconds(3000), 19, 13.5},
                {seconds(7200), 33, 18.625},
                {seconds(9000), 41.25, 19.875},
                {seconds(10800), 33.75, 31.875}};
    for (const auto& [sinceReset, percent, climbed] : rows) {
        SCOPED_TRACE(percent);
        const UsageSamples run = history({{2700, percent - climbed}, {0, percent}});
        const auto form = formOf(session(percent, sinceReset), run);
        ASSERT_TRUE(form && std::holds_alternative<Eta>(*form));
        EXPECT_EQ(std::get<Eta>(*form).moment, now + seconds(18000) - sinceReset);
    }
}

TEST(ProjectionEvaluate, aCandidateTellsTheStraightLineToo)
{
    const auto candidates = Projection::candidates({weekly(80, 0.5), weekly(30, 0.5)}, {}, now);
    ASSERT_EQ(candidates.size(), 2U);
    EXPECT_EQ(candidates[0].projected, 160.0);
    EXPECT_EQ(candidates[0].wall, std::get<Eta>(candidates[0].form).moment);
    EXPECT_EQ(candidates[1].projected, 60.0);
    EXPECT_EQ(candidates[1].wall, std::nullopt);
    EXPECT_EQ(candidates[1].title, "Weekly");
    EXPECT_EQ(candidates[1].kind, "weekly_all");
}

TEST(ProjectionEvaluate, theEarliestWallWinsThenTheFurthestThenTheFirst)
{
    const auto winner = [](const std::vector<LimitWindow>& windows) {
        return Projection::evaluate(windows, {}, now).value().windowKind;
    };
    const LimitWindow low = weekly(20, 0.5, "seven_day_low");
    const LimitWindow high = weekly(40, 0.5, "seven_day_high");
    const LimitWindow alsoHigh = weekly(40, 0.5, "seven_day_also");
    const LimitWindow late = weekly(60, 0.5, "seven_day_late");
    EXPECT_EQ(winner({low, high}), "seven_day_high");
    EXPECT_EQ(winner({high, alsoHigh}), "seven_day_high");
    EXPECT_EQ(winner({alsoHigh, high}), "seven_day_also");
    EXPECT_EQ(winner({high, late}), "seven_day_late");
    EXPECT_EQ(winner({late, high}), "seven_day_late");
    const LimitWindow sooner = weekly(95, 0.6, "seven_day_sooner");
    EXPECT_EQ(winner({late, sooner}), "seven_day_sooner");
    EXPECT_EQ(winner({sooner, late}), "seven_day_sooner");
}

TEST(ProjectionEvaluate, theEarlierWallWinsThoughItsStraightLineIsTheSmaller)
{
    const LimitWindow soon = session(60, seconds(9000)); // full in 100 minutes
    const LimitWindow later = weekly(90, 0.3);           // full in five hours and a half
    const auto candidates = Projection::candidates({soon, later}, {}, now);
    ASSERT_EQ(candidates.size(), 2U);
    ASSERT_LT(candidates[0].wall, candidates[1].wall);
    ASSERT_LT(candidates[0].projected, candidates[1].projected);
    EXPECT_EQ(Projection::evaluate({soon, later}, {}, now).value().windowKind, "session");
    EXPECT_EQ(Projection::evaluate({later, soon}, {}, now).value().windowKind, "session");
}

TEST(ProjectionEvaluate, aWallBeatsWhatGetsFurtherAndStandsFirst)
{
    const LimitWindow further = weekly(45, 0.5);
    const LimitWindow full = session(35, seconds(9000));
    const auto candidates = Projection::candidates({further, full}, climb(), now);
    ASSERT_EQ(candidates.size(), 2U);
    ASSERT_FALSE(candidates[0].wall);
    ASSERT_TRUE(candidates[1].wall);
    ASSERT_GT(candidates[0].projected, candidates[1].projected);
    EXPECT_EQ(Projection::evaluate({further, full}, climb(), now).value().windowKind, "session");
    EXPECT_EQ(Projection::evaluate({full, further}, climb(), now).value().windowKind, "session");
}

TEST(ProjectionTrailingRun, oneSampleOrNoneIsNoRun)
{
    EXPECT_EQ(runLength({}), std::nullopt);
    EXPECT_EQ(runLength(history({{0, 10}})), std::nullopt);
    EXPECT_EQ(runLength(history({{0, 10}, {0, 10}})), std::nullopt); // no time between them
    EXPECT_EQ(runLength(history({{3000, 1}, {0, 10}}, "weekly_all")), std::nullopt);
}

TEST(ProjectionTrailingRun, itSpansFortyFiveMinutesAndOneSpacingAtMost)
{
    std::vector<std::pair<int, double>> points;
    for (int ago = 36000; ago >= 0; ago -= 300)
        points.emplace_back(ago, 10);
    EXPECT_EQ(runLength(history(points)), 10U); // 2700 seconds
    EXPECT_EQ(runLength(history({{2700, 1}, {0, 2}})), 2U);
    EXPECT_EQ(runLength(history({{2699, 1}, {0, 2}})), std::nullopt);
    EXPECT_EQ(runLength(history({{4000, 0}, {2000, 1}, {0, 2}})), 3U);
}

TEST(ProjectionTrailingRun, aHoleOfMoreThanTwiceTheTypicalSpacingEndsIt)
{
    const auto withHole = [](int hole) {
        std::vector<std::pair<int, double>> points;
        for (int i = 0; i <= 8; ++i)
            points.emplace_back(300 * i, 10);
        for (int i = 0; i <= 8; ++i)
            points.emplace_back(2400 + hole + 300 * i, 10);
        std::reverse(points.begin(), points.end());
        return history(points);
    };
    EXPECT_EQ(runLength(withHole(600)), 10U); // joined: 2400 and 600 are enough
    EXPECT_EQ(runLength(withHole(601)), std::nullopt);
}

TEST(ProjectionTrailingRun, theUpperMedianOfTheSpacingsIsTheTypicalOne)
{
    // Spacings 100, 100, 1300, 1300: the third counts, so holes up to 2600 are none.
    EXPECT_EQ(runLength(history({{2800, 1}, {1500, 2}, {200, 3}, {100, 4}, {0, 5}})), 5U);
}

TEST(ProjectionTrailingRun, theSpacingIsThatOfTheSamplesThatTellTheKind)
{
    UsageSamples samples;
    for (int ago = 7200; ago >= 0; ago -= 60) {
        UsageSample sample;
        sample.at = now - seconds(ago);
        sample.percents.set("weekly_all", 10);
        if (ago % 600 == 0)
            sample.percents.set("session", 10);
        samples.push_back(std::move(sample));
    }
    EXPECT_EQ(runLength(samples), 6U); // 3000 seconds
}

TEST(ProjectionTrailingRun, samplesOfOneMomentDoNotMakeTheSpacingZero)
{
    std::vector<std::pair<int, double>> points;
    for (int ago = 3600; ago >= 0; ago -= 300) {
        for (int i = 0; i < 3; ++i) // two of three spacings are none
            points.emplace_back(ago, 10);
    }
    EXPECT_EQ(runLength(history(points)), 28U); // nine moments, and the last sample of the tenth
}

TEST(ProjectionTrailingRun, aHistoryThatHasStoppedTellsNothing)
{
    const auto ended = [](int ago) {
        std::vector<std::pair<int, double>> points;
        for (int i = 12; i >= 0; --i)
            points.emplace_back(ago + 300 * i, 10);
        return history(points);
    };
    EXPECT_TRUE(runLength(ended(600)));
    EXPECT_FALSE(runLength(ended(601)));
}

TEST(ProjectionTrailingRun, anyFallEndsItAndAPlateauDoesNot)
{
    std::vector<std::pair<int, double>> points;
    for (int i = 12; i >= 0; --i)
        points.emplace_back(300 * i, 50);
    EXPECT_EQ(runLength(history(points)), 10U);
    points[8].second = 50.001; // twenty minutes ago
    EXPECT_EQ(runLength(history(points)), std::nullopt);
}

TEST(ProjectionEwmaRate, whatLiesFifteenMinutesBackWeighsHalf)
{
    const Points run = {{now - seconds(1800), 0}, {now - seconds(900), 9}, {now, 9}};
    // 0.01 % a second with weight a half, then nothing with weight one.
    EXPECT_NEAR(Projection::ewmaRate(run, now), 0.01 / 3, 1e-12);
}

TEST(ProjectionEwmaRate, aPairWeighsByItsEndAndNotByItsBeginning)
{
    const Points run = {{now - seconds(2700), 0}, {now - seconds(900), 0}, {now, 9}};
    // Half an hour of nothing with weight a half, then 0.01 % a second for a quarter.
    EXPECT_NEAR(Projection::ewmaRate(run, now), 0.005, 1e-12);
}

TEST(ProjectionEwmaRate, itIsNeverNegativeAndPairsWithoutTimeAreSkipped)
{
    EXPECT_EQ(Projection::ewmaRate({}, now), 0.0);
    EXPECT_EQ(Projection::ewmaRate({{now, 5}}, now), 0.0);
    EXPECT_EQ(Projection::ewmaRate({{now, 5}, {now, 50}}, now), 0.0);
    EXPECT_EQ(Projection::ewmaRate({{now - seconds(100), 5}, {now, 4}}, now), 0.0);
    EXPECT_NEAR(Projection::ewmaRate({{now - seconds(100), 0}, {now, 1}, {now, 90}}, now), 0.01,
                1e-12);
}

} // namespace
} // namespace vellumor::projectionEvaluateTest
