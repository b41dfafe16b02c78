// The chart of any week is what the plainest code makes of it, number for number. That code is
// here: it goes over everything as often as it likes.

#include "history/HistoryChart.h"

#include "history/Sparkline.h"
#include "support/FakeClock.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <random>

namespace vellumor::historyChartReferenceTest {

using HistoryChart::Point;
using HistoryChart::Points;
using test::instant;

namespace {

constexpr std::chrono::seconds week(604800);

const Instant start = instant("2026-03-24T11:17:31.250Z");

// --- The plainest code
// ------------------------------------------------------------------------------

std::vector<Sparkline::Run> plainRuns(const UsageSamples& samples, const std::string& kind)
{
    Sparkline::Run points;
    for (const UsageSample& sample : samples) {
        for (const auto& [each, percent] : sample.percents) {
            if (each == kind)
                points.push_back({sample.at, percent});
        }
    }
    if (points.size() < 2)
        return {};
    std::vector<double> spacings;
    for (std::size_t i = 1; i < points.size(); ++i) {
        if (const double spacing = secondsBetween(points[i - 1].at, points[i].at); spacing > 0)
            spacings.push_back(spacing);
    }
    std::ranges::sort(spacings);
    std::vector<Sparkline::Run> runs(1);
    for (std::size_t i = 0; i < points.size(); ++i) {
        if (i > 0 && !spacings.empty() &&
            secondsBetween(points[i - 1].at, points[i].at) > 2 * spacings[spacings.size() / 2])
            runs.emplace_back();
        runs.back().push_back(points[i]);
    }
    return runs;
}

std::vector<std::size_t> plainEdges(const Points& points)
{
    std::vector<std::size_t> edges;
    for (std::size_t i = 1; i < points.size(); ++i) {
        if (points[i].y < points[i - 1].y - 1.0) {
            edges.push_back(i - 1);
            edges.push_back(i);
        }
    }
    return edges;
}

Point plainMean(const Points& points, std::size_t begin, std::size_t end)
{
    Point sum;
    for (std::size_t i = begin; i < end; ++i)
        sum = {sum.x + points[i].x, sum.y + points[i].y};
    const auto count = static_cast<double>(end - begin);
    return {sum.x / count, sum.y / count};
}

Points plainDownsample(const Points& points, std::size_t n)
{
    const std::size_t c = points.size();
    if (n < 2 || c <= n)
        return points;
    Points kept{points.front()};
    const double width = n == 2 ? 0 : static_cast<double>(c - 2) / static_cast<double>(n - 2);
    const auto bound = [&](std::size_t bucket) {
        return static_cast<std::size_t>(std::trunc(width * static_cast<double>(bucket))) + 1;
    };
    for (std::size_t bucket = 0; bucket + 2 < n; ++bucket) {
        const std::size_t end = std::min(c - 1, bound(bucket + 1));
        const std::size_t meanEnd = bucket + 3 == n ? c : std::min(c, bound(bucket + 2));
        const Point m = plainMean(points, end, meanEnd);
        const Point a = kept.back();
        Point best;
        double largest = -1;
        for (std::size_t i = bound(bucket); i < end; ++i) {
            const Point& p = points[i];
            const double area = std::abs((a.x - m.x) * (p.y - a.y) - (m.y - a.y) * (a.x - p.x));
            if (area > largest) {
                largest = area;
                best = p;
            }
        }
        kept.push_back(best);
    }
    kept.push_back(points.back());
    return kept;
}

Points plainRelaxed(Points points)
{
    if (points.size() < 3)
        return points;
    std::map<std::size_t, bool> isPinned{{0, true}, {points.size() - 1, true}};
    for (const std::size_t edge : plainEdges(points))
        isPinned[edge] = true;
    std::size_t highest = 0;
    for (std::size_t i = 1; i < points.size(); ++i)
        highest = points[i].y > points[highest].y ? i : highest;
    isPinned[highest] = true;
    for (int pass = 0; pass < 2; ++pass) {
        for (std::size_t i = 1; i + 1 < points.size(); ++i) {
            if (!isPinned[i])
                points[i].y = 0.25 * points[i - 1].y + 0.5 * points[i].y + 0.25 * points[i + 1].y;
        }
    }
    return points;
}

std::vector<Points> plainSegments(const UsageSamples& samples, const std::string& kind,
                                  const TimeSpan& span)
{
    std::vector<Points> segments;
    for (const Sparkline::Run& run : plainRuns(samples, kind)) {
        Points points;
        for (const auto& [at, y] : run) {
            if (at >= span.start && at <= span.end)
                points.push_back({secondsBetween(span.start, at) / span.seconds(),
                                  std::isnan(y) ? 0 : std::clamp(y, 0.0, 100.0)});
        }
        if (points.size() < 2)
            continue;
        const double share = std::trunc((points.back().x - points.front().x) * 80.0);
        Points drawn = plainDownsample(points, share <= 2 ? 2 : static_cast<std::size_t>(share));
        for (const std::size_t edge : plainEdges(points)) {
            if (std::ranges::find(drawn, points[edge]) == drawn.end())
                drawn.push_back(points[edge]);
        }
        std::ranges::stable_sort(drawn, {}, &Point::x);
        segments.push_back(plainRelaxed(std::move(drawn)));
    }
    return segments;
}

// --- The weeks
// ------------------------------------------------------------------------------

class Weeks {
public:
    explicit Weeks(std::uint64_t seed)
        : m_random(seed)
    {
    }

    // One after the other: as they come about, with every fault that a file may have.
    UsageSamples next()
    {
        UsageSamples samples;
        const auto count = static_cast<std::size_t>(below(4) == 0 ? below(8) : below(500));
        const std::chrono::microseconds spacing(below(5) == 0 ? 1 + below(4)
                                                              : 1000 * (60 + below(900000)));
        const bool isTroubled = below(2) == 0;
        Instant at = start - spacing * below(60);
        m_level = upTo(100);
        while (samples.size() < count) {
            samples.push_back({at, percents(isTroubled)});
            at += step(spacing, isTroubled);
        }
        if (below(2) == 0)
            shareKinds(samples);
        return samples;
    }

    TimeSpan span()
    {
        const TimeSpan spans[] = {
            {start, start + week},
            {start, start + week},
            {start + week / 9, start + week / 3},
            {start, start + std::chrono::microseconds(3)},
            {start - week, start},
            {start, start},
            {instant("0001-01-01T00:00:00Z"), instant("9999-12-31T23:59:59Z")}};
        return spans[below(7)];
    }

private:
    // As those that are read from a file do: neighbours of equal kinds have one list.
    static void shareKinds(UsageSamples& samples)
    {
        for (std::size_t i = 1; i < samples.size(); ++i) {
            const Percents own = samples[i].percents;
            Percents shared = samples[i - 1].percents;
            bool isEqual = own.size() == shared.size();
            for (std::size_t kind = 0; isEqual && kind < own.size(); ++kind) {
                isEqual = own.kindAt(kind) == shared.kindAt(kind);
                shared.setAt(kind, own.at(kind));
            }
            if (isEqual)
                samples[i].percents = shared;
        }
    }

    std::chrono::microseconds step(std::chrono::microseconds spacing, bool isTroubled)
    {
        const int fifth = static_cast<int>(spacing.count() / 5);
        const auto varied = spacing + std::chrono::microseconds(below(1 + fifth));
        if (below(50) == 0)
            return spacing * (1 + below(6)); // from none to six
        if (!isTroubled)
            return varied;
        switch (below(30)) {
        case 0:
            return {};
        case 1:
            return -varied;
        case 2:
            return -varied * 40;
        case 3:
            return varied * 40;
        default:
            return varied;
        }
    }

    Percents percents(bool isTroubled)
    {
        constexpr double infinite = std::numeric_limits<double>::infinity();
        const double odd[] = {0,    -0.0,     -5,        100,          100.5,  1e300,
                              -1e9, infinite, -infinite, std::nan(""), 5e-324, 99.999999999};
        m_level = below(60) == 0 ? upTo(100) : m_level + upTo(2) - 0.9;
        Percents percents;
        for (const char* kind : {"session", "weekly_all", "seven_day_opus", "a", "b"}) {
            const bool isRare = kind[1] == '\0';
            if (below(isRare ? 2 : isTroubled ? 20 : 1000) == 0 && !(isRare && !isTroubled))
                continue;
            const double level = kind[0] == 's' ? std::floor(m_level) : m_level;
            percents.set(kind, isTroubled && below(20) == 0 ? odd[below(12)] : level);
        }
        return percents;
    }

    int below(int limit)
    {
        return static_cast<int>(m_random() % static_cast<std::uint64_t>(limit));
    }
    double upTo(double limit) { return std::uniform_real_distribution<double>(0, limit)(m_random); }

    std::mt19937_64 m_random;
    double m_level = 0;
};

} // namespace

TEST(HistoryChartReference, whatIsDrawnOfAnyWeekIsWhatThePlainestCodeMakesOfIt)
{
    Weeks weeks(7);
    const std::string_view kinds[] = {"session", "weekly_all", "seven_day_opus", "a", "unknown"};
    std::size_t points = 0;
    for (int round = 0; round < 3000; ++round) {
        SCOPED_TRACE(round);
        const UsageSamples samples = weeks.next();
        const TimeSpan span = weeks.span();
        // As many at once as the round says, so that some share their places and others cannot.
        const std::size_t count = 1 + static_cast<std::size_t>(round) % std::size(kinds);
        const auto all = HistoryChart::segmentsOfKinds(samples, {kinds, count}, span);
        ASSERT_EQ(all.size(), count);
        for (std::size_t i = 0; i < count; ++i) {
            const std::string kind(kinds[i]);
            const auto expected =
                span.seconds() > 0 ? plainSegments(samples, kind, span) : std::vector<Points>();
            ASSERT_EQ(all[i], expected) << kind;
            ASSERT_EQ(HistoryChart::segments(samples, kind, span), expected) << kind;
            for (const Points& segment : expected)
                points += segment.size();
        }
    }
    EXPECT_GT(points, 100000U);
}

TEST(HistoryChartReference, theRunsOfAnyWeekArePartedAtTheSameHoles)
{
    Weeks weeks(8);
    std::size_t runs = 0;
    for (int round = 0; round < 3000; ++round) {
        SCOPED_TRACE(round);
        const UsageSamples samples = weeks.next();
        const std::string kind = round % 2 == 0 ? "session" : "a";
        const auto found = Sparkline::runs(samples, kind);
        const auto expected = plainRuns(samples, kind);
        ASSERT_EQ(found.size(), expected.size());
        runs += found.size();
        for (std::size_t i = 0; i < found.size(); ++i) // their percents may be no numbers
            ASSERT_TRUE(std::ranges::equal(found[i], expected[i], {}, &Sparkline::Point::at,
                                           &Sparkline::Point::at));
    }
    EXPECT_GT(runs, 15000U);
}

TEST(HistoryChartReference, whatIsThinnedIsWhatThePlainestCodeKeeps)
{
    std::mt19937_64 random(9);
    for (int round = 0; round < 3000; ++round) {
        SCOPED_TRACE(round);
        Points points(random() % 600);
        for (std::size_t i = 0; i < points.size(); ++i) {
            const bool isLevel = round % 3 == 0; // triangles without an area, and equal ones
            points[i] = {static_cast<double>(i), isLevel ? static_cast<double>(i / 50 % 2)
                                                         : static_cast<double>(random() % 101)};
        }
        const std::size_t count = random() % 120;
        ASSERT_EQ(HistoryChart::downsample(points, count), plainDownsample(points, count));
        ASSERT_EQ(HistoryChart::relaxed(points), plainRelaxed(points));
    }
}

} // namespace vellumor::historyChartReferenceTest
