#include "history/HistoryChart.h"

#include "history/Sparkline.h"
#include "support/FakeClock.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

namespace vellumor::historyChartPropertyTest {

using HistoryChart::Curve;
using HistoryChart::Point;
using HistoryChart::Points;
using test::instant;

namespace {

constexpr std::chrono::seconds week(604800);

const Instant start = instant("2026-03-24T11:17:31.250Z");
const TimeSpan span{start, start + week};

double clamped(double percent)
{
    return percent > 0 ? std::min(percent, 100.0) : 0.0;
}

// Weeks as they come about, and as they cannot.
class Weeks {
public:
    explicit Weeks(std::uint64_t seed)
        : m_random(seed)
    {
    }

    // Climbs with jitter, falls now and then, and has holes; it begins before the span and ends
    // behind it.
    UsageSamples orderly()
    {
        UsageSamples samples;
        double percent = upTo(100);
        const auto spacing = std::chrono::seconds(60 + below(3600));
        for (Instant at = start - week / 20; at < span.end + week / 20;) {
            samples.push_back({at, {{"session", percent}}});
            percent += upTo(4) - 1;
            if (below(40) == 0 || percent > 108)
                percent = upTo(std::abs(percent));
            const bool isHole = below(60) == 0;
            at += isHole ? spacing * (3 + below(40))
                         : spacing + std::chrono::milliseconds(below(900));
        }
        return samples;
    }

    // Any percents at any moments, many of them at the same.
    UsageSamples wild()
    {
        constexpr double infinite = std::numeric_limits<double>::infinity();
        const double odd[] = {
            0,      -0.0,     -5,        100,          100.5,  1e300,
            -1e300, infinite, -infinite, std::nan(""), 5e-324, 1e-310,
            1e-200, 1e-160,   99.999999, 50,           50,     1.0000000000000002};
        UsageSamples samples(static_cast<std::size_t>(below(400)));
        std::int64_t second = -3600;
        for (UsageSample& sample : samples) {
            const std::int64_t steps[] = {0, 1, 60, 600, 3600, -60, -86400, 86400};
            second += steps[below(8)];
            sample.at = start + std::chrono::seconds(second) + std::chrono::microseconds(below(2));
            const double percent = below(2) == 0 ? odd[below(18)] : upTo(100);
            sample.percents.set("session", percent);
        }
        return samples;
    }

    Points points()
    {
        Points points(static_cast<std::size_t>(below(300)));
        double x = 0;
        for (Point& point : points)
            point = {x += upTo(0.01) + 1e-9, below(4) == 0 ? 100.0 * below(2) : upTo(100)};
        return points;
    }

    int below(int limit)
    {
        return static_cast<int>(m_random() % static_cast<std::uint64_t>(limit));
    }
    double upTo(double limit) { return std::uniform_real_distribution<double>(0, limit)(m_random); }

private:
    std::mt19937_64 m_random;
};

double bezier(double a, double b, double c, double d, double t)
{
    const double u = 1 - t;
    return u * u * u * a + 3 * u * u * t * b + 3 * u * t * t * c + t * t * t * d;
}

bool isWithin(double value, double a, double b)
{
    return value >= std::min(a, b) - 1e-9 && value <= std::max(a, b) + 1e-9; // NaN is not
}

// It stays between its ends and never turns back.
bool isHonest(const Curve& curve)
{
    constexpr int steps = 32;
    double last = curve.p0.x;
    for (int step = 0; step <= steps; ++step) {
        const double t = static_cast<double>(step) / steps;
        const double x = bezier(curve.p0.x, curve.c1.x, curve.c2.x, curve.p1.x, t);
        const double y = bezier(curve.p0.y, curve.c1.y, curve.c2.y, curve.p1.y, t);
        if (!isWithin(x, curve.p0.x, curve.p1.x) || !isWithin(y, curve.p0.y, curve.p1.y) ||
            !(x >= last - 1e-12))
            return false;
        last = x;
    }
    return true;
}

// What holds for any segments of any samples.
void expectDrawable(const std::vector<Points>& segments)
{
    for (const Points& points : segments) {
        ASSERT_GE(points.size(), 2U);
        EXPECT_TRUE(std::ranges::is_sorted(points, {}, &Point::x));
        for (const Point& point : points) {
            EXPECT_TRUE(point.x >= 0 && point.x <= 1) << point.x;
            EXPECT_TRUE(point.y >= 0 && point.y <= 100) << point.y;
        }
        const auto curves = HistoryChart::curves(points);
        ASSERT_EQ(curves.size(), points.size() - 1);
        for (std::size_t i = 0; i < curves.size(); ++i) {
            EXPECT_EQ(curves[i].p0, points[i]);
            EXPECT_EQ(curves[i].p1, points[i + 1]);
            EXPECT_TRUE(isHonest(curves[i])) << i;
        }
    }
}

// The stretches of orderly samples, told without the code: points whose neighbours are no hole
// away.
std::vector<Points> stretchesOf(const UsageSamples& samples)
{
    std::vector<double> spacings;
    for (std::size_t i = 1; i < samples.size(); ++i)
        spacings.push_back(secondsBetween(samples[i - 1].at, samples[i].at));
    std::ranges::sort(spacings);
    const double limit = 2 * spacings.at(spacings.size() / 2);
    std::vector<Points> stretches(1);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        if (i > 0 && secondsBetween(samples[i - 1].at, samples[i].at) > limit)
            stretches.emplace_back();
        const double x = secondsBetween(start, samples[i].at) / span.seconds();
        if (x >= 0 && x <= 1)
            stretches.back().push_back({x, clamped(*samples[i].percents.find("session"))});
    }
    std::erase_if(stretches, [](const Points& points) { return points.size() < 2; });
    return stretches;
}

bool has(const Points& points, const Point& point)
{
    return std::ranges::find(points, point) != points.end();
}

// `drawn` goes from the first to the last of `raw`, shows each of its resets, and holds no more.
void expectFaithful(const Points& drawn, const Points& raw)
{
    EXPECT_EQ(drawn.front(), raw.front());
    EXPECT_EQ(drawn.back(), raw.back());
    std::size_t edges = 0;
    for (std::size_t i = 1; i < raw.size(); ++i) {
        if (raw[i].y < raw[i - 1].y - 1.0) {
            EXPECT_TRUE(has(drawn, raw[i - 1])) << raw[i - 1].x;
            EXPECT_TRUE(has(drawn, raw[i])) << raw[i].x;
            edges += 2;
        }
    }
    const double share = (raw.back().x - raw.front().x) * 80;
    EXPECT_LE(static_cast<double>(drawn.size()), std::max(2.0, share) + static_cast<double>(edges));
    for (const Point& point : drawn)
        EXPECT_TRUE(std::ranges::binary_search(raw, point.x, {}, &Point::x)) << point.x;
}

} // namespace

TEST(HistoryChartProperty, orderlyWeeksAreDrawnFaithfullyAndNoHoleIsBridged)
{
    Weeks weeks(1);
    for (int round = 0; round < 100; ++round) {
        SCOPED_TRACE(round);
        const UsageSamples samples = weeks.orderly();
        const auto segments = HistoryChart::segments(samples, "session", span);
        expectDrawable(segments);
        const auto stretches = stretchesOf(samples);
        ASSERT_EQ(segments.size(), stretches.size());
        for (std::size_t i = 0; i < segments.size(); ++i)
            expectFaithful(segments[i], stretches[i]);
        ASSERT_FALSE(HasFailure());
    }
}

TEST(HistoryChartProperty, noSamplesMakeACurveThatCannotBeDrawn)
{
    Weeks weeks(2);
    const TimeSpan spans[] = {span,
                              {start, start + std::chrono::microseconds(1)},
                              {start - week, start},
                              {instant("0001-01-01T00:00:00Z"), instant("9999-12-31T23:59:59Z")}};
    for (int round = 0; round < 1000; ++round) {
        SCOPED_TRACE(round);
        const UsageSamples samples = weeks.wild();
        for (const TimeSpan& each : spans) {
            expectDrawable(HistoryChart::segments(samples, "session", each));
            for (const double tick : HistoryChart::resetTicks(samples, "session", each))
                EXPECT_TRUE(tick >= 0 && tick <= 1) << tick;
        }
        ASSERT_FALSE(HasFailure());
    }
}

TEST(HistoryChartProperty, thinningKeepsTheEndsTheOrderAndTheCount)
{
    Weeks weeks(3);
    for (int round = 0; round < 2000; ++round) {
        SCOPED_TRACE(round);
        const Points points = weeks.points();
        const auto count = static_cast<std::size_t>(2 + weeks.below(100));
        const Points thinned = HistoryChart::downsample(points, count);
        ASSERT_EQ(thinned.size(), std::min(points.size(), count));
        EXPECT_TRUE(std::ranges::includes(points, thinned, {}, &Point::x, &Point::x));
        for (const Point& point : thinned)
            EXPECT_TRUE(has(points, point));
        if (!points.empty()) {
            EXPECT_EQ(thinned.front(), points.front());
            EXPECT_EQ(thinned.back(), points.back());
        }
    }
}

TEST(HistoryChartProperty, calmingMovesNoPinnedPointAndNoneOutOfReach)
{
    Weeks weeks(4);
    for (int round = 0; round < 2000; ++round) {
        SCOPED_TRACE(round);
        const Points points = weeks.points();
        const Points calmed = HistoryChart::relaxed(points);
        ASSERT_EQ(calmed.size(), points.size());
        if (points.empty())
            continue;
        const auto highest = std::ranges::max_element(points, {}, &Point::y) - points.begin();
        const double lowest = std::ranges::min(points, {}, &Point::y).y;
        for (std::size_t i = 0; i < points.size(); ++i) {
            EXPECT_EQ(calmed[i].x, points[i].x);
            EXPECT_GE(calmed[i].y, lowest - 1e-9);
            EXPECT_LE(calmed[i].y, points[static_cast<std::size_t>(highest)].y + 1e-9);
            const bool fellTo = i > 0 && points[i].y < points[i - 1].y - 1;
            const bool fallsFrom = i + 1 < points.size() && points[i + 1].y < points[i].y - 1;
            if (i == 0 || i + 1 == points.size() || fellTo || fallsFrom ||
                i == static_cast<std::size_t>(highest)) {
                EXPECT_EQ(calmed[i].y, points[i].y) << i;
            }
        }
    }
}

} // namespace vellumor::historyChartPropertyTest
