#include "history/HistoryChartThinning.h"

#include <gtest/gtest.h>

#include <cmath>

namespace vellumor::historyChartThinningTest {

using HistoryChart::Thinning;
using Indices = std::vector<std::size_t>;

namespace {

// Places side by side.
std::vector<double> places(std::size_t count)
{
    std::vector<double> xs;
    while (xs.size() < count)
        xs.push_back(static_cast<double>(xs.size()));
    return xs;
}

} // namespace

TEST(HistoryChartThinning, whatIsNoMoreThanMayStayStaysWhole)
{
    const auto xs = places(3);
    for (const std::size_t count : {0U, 1U, 3U, 4U, 80U})
        EXPECT_EQ(Thinning(xs, count).kept(xs), (Indices{0, 1, 2})) << count;
    EXPECT_EQ(Thinning({}, 80).kept({}), Indices());
    EXPECT_EQ(Thinning({}, 2).kept({}), Indices());
}

TEST(HistoryChartThinning, ofTwoTheEndsStay)
{
    const auto xs = places(50);
    EXPECT_EQ(Thinning(xs, 2).kept(xs), (Indices{0, 49}));
}

TEST(HistoryChartThinning, oneThinningServesSeveralLines)
{
    const auto xs = places(100);
    const Thinning thinning(xs, 4);
    for (const std::size_t peak : {1U, 20U, 48U}) {
        std::vector<double> ys(100, 5.0);
        ys[peak] = 60;
        EXPECT_EQ(thinning.kept(ys).at(1), peak);
    }
}

// Whether its place among those that are compared side by side is the first, the last or beyond
// them.
TEST(HistoryChartThinning, theFirstOfEqualTrianglesStaysWhereverItStands)
{
    const auto xs = places(72);
    const Thinning thinning(xs, 3);
    for (std::size_t first = 1; first < 70; ++first) {
        std::vector<double> ys(72, 0.0); // a level line: only its height makes a triangle
        ys[first] = ys[70] = 9;
        EXPECT_EQ(thinning.kept(ys), (Indices{0, first, 71})) << first;
    }
    EXPECT_EQ(thinning.kept(std::vector<double>(72, 0.0)), (Indices{0, 1, 71}));
}

TEST(HistoryChartThinning, heightsThatAreNoNumbersStillLeaveOnePointABucket)
{
    const auto xs = places(400);
    const std::vector<double> ys(400, std::nan(""));
    EXPECT_EQ(Thinning(xs, 10).kept(ys).size(), 10U);
}

} // namespace vellumor::historyChartThinningTest
