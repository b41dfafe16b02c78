#include "history/HistoryChartColumns.h"

#include "support/FakeClock.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace vellumor::historyChartColumnsTest {

using HistoryChart::Columns;
using Rows = Columns::Rows;
using Numbers = std::vector<double>;
using test::instant;

namespace {

using namespace std::chrono_literals;

const Instant start = instant("2026-03-01T09:30:00.125Z");
const TimeSpan span{start, start + 1000s};

// One of these kinds at this second, in a list of its own.
UsageSample sample(int second, double session, double weekly)
{
    return {start + std::chrono::seconds(second), {{"session", session}, {"weekly_all", weekly}}};
}

Numbers numbers(std::span<const double> of)
{
    return {of.begin(), of.end()};
}

constexpr std::string_view both[] = {"weekly_all", "session"};

} // namespace

TEST(HistoryChartColumns, eachKindHasAColumnAndAllShareTheirPlaces)
{
    const UsageSamples samples = {sample(0, 1, 10), sample(100, 2, 20), sample(250, 3, 30)};
    Columns columns(samples, both, span);
    EXPECT_FALSE(columns.isRagged());
    ASSERT_EQ(columns.stretches(), (std::vector<Rows>{{0, 3}}));
    EXPECT_EQ(numbers(columns.places({0, 3})), (Numbers{0, 0.1, 0.25}));
    EXPECT_EQ(numbers(columns.heights({0, 3}, 0)), (Numbers{10, 20, 30}));
    EXPECT_EQ(numbers(columns.heights({1, 3}, 1)), (Numbers{2, 3}));
}

TEST(HistoryChartColumns, theyAreTheSameWhetherTheListsOfKindsAreSharedOrNot)
{
    for (const int count : {1, 15, 16, 17, 32, 100}) {
        SCOPED_TRACE(count);
        UsageSamples shared;
        UsageSamples single;
        for (int i = 0; i < count; ++i) {
            single.push_back(sample(i, i, 100 - i));
            shared.push_back(i == 0 ? single[0] : shared[0]);
            shared.back().at = single.back().at;
            shared.back().percents.setAt(0, i);
            shared.back().percents.setAt(1, 100 - i);
        }
        ASSERT_EQ(shared, single);
        const Rows all{0, static_cast<std::size_t>(count)};
        const Columns one(shared, both, span);
        const Columns other(single, both, span);
        EXPECT_EQ(numbers(one.places(all)), numbers(other.places(all)));
        for (const std::size_t kind : {0U, 1U}) {
            EXPECT_EQ(numbers(one.heights(all, kind)), numbers(other.heights(all, kind)));
            EXPECT_EQ(one.heights(all, kind).back(), kind == 0 ? 101 - count : count - 1);
        }
    }
}

TEST(HistoryChartColumns, aSampleWithSomeOfTheKindsMakesThemRaggedAndOneWithNoneDoesNot)
{
    const UsageSample without{start + 50s, {{"other", 7}}};
    const UsageSample half{start + 50s, {{"session", 7}}};
    Columns columns({sample(0, 1, 10), without, sample(100, 2, 20)}, both, span);
    EXPECT_FALSE(columns.isRagged());
    EXPECT_EQ(columns.stretches(), (std::vector<Rows>{{0, 2}}));
    EXPECT_EQ(numbers(columns.heights({0, 2}, 1)), (Numbers{1, 2}));
    EXPECT_TRUE(Columns({sample(0, 1, 10), half}, both, span).isRagged());
    EXPECT_FALSE(Columns({sample(0, 1, 10), half}, std::span(both).last(1), span).isRagged());
}

TEST(HistoryChartColumns, rowsWithinTheSpanStandSideBySideInTheirOrder)
{
    UsageSamples samples;
    for (const int second : {-20, -10, 990, 1010, 1000, 980, 2000})
        samples.push_back(sample(second, 0, second / 100));
    Columns columns(samples, both, span);
    const auto rows = columns.stretches();
    ASSERT_EQ(rows.size(), 1U);
    EXPECT_EQ(numbers(columns.places(rows[0])), (Numbers{0.99, 1, 0.98}));
    EXPECT_EQ(numbers(columns.heights(rows[0], 0)), (Numbers{9, 10, 9}));
}

TEST(HistoryChartColumns, aHeightIsFromZeroToAHundred)
{
    constexpr double infinite = std::numeric_limits<double>::infinity();
    const std::pair<double, double> rows[] = {{50, 50},       {-0.0, 0},        {-1, 0},
                                              {100, 100},     {100.5, 100},     {infinite, 100},
                                              {-infinite, 0}, {std::nan(""), 0}};
    for (const auto& [percent, height] : rows) {
        const Columns columns({sample(0, percent, 0)}, both, span);
        EXPECT_EQ(columns.heights({0, 1}, 1)[0], height) << percent;
        EXPECT_FALSE(std::signbit(columns.heights({0, 1}, 1)[0])) << percent;
    }
}

} // namespace vellumor::historyChartColumnsTest
