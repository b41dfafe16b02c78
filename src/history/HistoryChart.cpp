#include "history/HistoryChart.h"

#include "base/LocalTime.h"
#include "history/HistoryChartColumns.h"
#include "history/HistoryChartThinning.h"
#include "history/Sparkline.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <functional>
#include <iterator>
#include <set>
#include <utility>

namespace vellumor::HistoryChart {

namespace {

constexpr double pointsOfSpan = 80.0;
constexpr int passes = 2;

using Indices = std::vector<std::size_t>; // rising
using Numbers = std::span<const double>;

// False where no height is a fall; a quick look, since falls are few. A difference has a sign even
// where it is too small for any other trace.
bool mayHaveFall(Numbers ys, std::size_t begin, std::size_t end)
{
    std::uint64_t signs = 0;
    for (std::size_t i = begin; i < end; ++i)
        signs |= std::bit_cast<std::uint64_t>(ys[i] - (ys[i - 1] - 1.0));
    return std::bit_cast<std::int64_t>(signs) < 0;
}

// Both sides of each fall.
Indices resetEdges(Numbers ys)
{
    constexpr std::size_t block = 16;
    Indices edges;
    for (std::size_t begin = 1; begin < ys.size(); begin += block) {
        const std::size_t end = std::min(begin + block, ys.size());
        if (!mayHaveFall(ys, begin, end))
            continue;
        for (std::size_t i = begin; i < end; ++i) {
            if (!Sparkline::isReset(ys[i - 1], ys[i]))
                continue;
            if (edges.empty() || edges.back() != i - 1)
                edges.push_back(i - 1);
            edges.push_back(i);
        }
    }
    return edges;
}

std::vector<double> column(const Points& points, double Point::*number)
{
    std::vector<double> numbers;
    numbers.reserve(points.size());
    for (const Point& point : points)
        numbers.push_back(point.*number);
    return numbers;
}

std::size_t targetOf(Numbers xs)
{
    const double target = std::trunc((xs.back() - xs.front()) * pointsOfSpan);
    return target <= 2 ? 2 : static_cast<std::size_t>(target);
}

Points pointsAt(const Indices& indices, Numbers xs, Numbers ys)
{
    Points points;
    points.reserve(indices.size());
    for (const std::size_t i : indices)
        points.push_back({xs[i], ys[i]});
    return points;
}

// The points that the thinning has kept and the edges that it has dropped, by their place. Points
// that are equal may stand at several indices.
Points sortedWithEdges(Points kept, const Points& edges)
{
    std::set<std::pair<double, double>> there;
    for (const Point& point : kept)
        there.emplace(point.x, point.y);
    for (const Point& edge : edges) {
        if (there.emplace(edge.x, edge.y).second)
            kept.push_back(edge);
    }
    std::ranges::stable_sort(kept, {}, &Point::x);
    return kept;
}

// The same, which is easy where each point stands behind the one before it: only a clock that was
// set back leaves others.
Points withEdges(const Indices& kept, Numbers xs, Numbers ys)
{
    const Indices edges = resetEdges(ys);
    Indices both;
    both.reserve(kept.size() + edges.size());
    std::ranges::set_union(kept, edges, std::back_inserter(both));
    Points points = pointsAt(both, xs, ys);
    const bool isRising =
        std::ranges::adjacent_find(points, std::greater_equal(), &Point::x) == points.end();
    return isRising ? points : sortedWithEdges(pointsAt(kept, xs, ys), pointsAt(edges, xs, ys));
}

// Slope between neighbours; level where they stand above one another.
double slope(const Point& a, const Point& b)
{
    const double width = b.x - a.x;
    return width == 0 ? 0 : (b.y - a.y) / width;
}

} // namespace

std::vector<Points> segments(const UsageSamples& samples, std::string_view kind,
                             const TimeSpan& span)
{
    return std::move(segmentsOfKinds(samples, {&kind, 1}, span).front());
}

std::vector<std::vector<Points>> segmentsOfKinds(const UsageSamples& samples,
                                                 std::span<const std::string_view> kinds,
                                                 const TimeSpan& span)
{
    std::vector<std::vector<Points>> found(kinds.size());
    if (kinds.empty() || !(span.seconds() > 0))
        return found;
    Columns columns(samples, kinds, span);
    if (columns.isRagged()) { // each has places of its own
        for (std::size_t i = 0; i < kinds.size(); ++i)
            found[i] = segments(samples, kinds[i], span);
        return found;
    }
    for (const Columns::Rows& rows : columns.stretches()) {
        const auto xs = columns.places(rows);
        const Thinning thinning(xs, targetOf(xs));
        for (std::size_t i = 0; i < kinds.size(); ++i) {
            const auto ys = columns.heights(rows, i);
            found[i].push_back(relaxed(withEdges(thinning.kept(ys), xs, ys)));
        }
    }
    return found;
}

Points downsample(const Points& points, std::size_t count)
{
    const auto xs = column(points, &Point::x);
    const auto ys = column(points, &Point::y);
    return pointsAt(Thinning(xs, count).kept(ys), xs, ys);
}

Points relaxed(Points points)
{
    if (points.size() < 3)
        return points;
    std::vector<bool> isPinned(points.size(), false);
    isPinned.front() = isPinned.back() = true;
    for (const std::size_t edge : resetEdges(column(points, &Point::y)))
        isPinned[edge] = true;
    const auto highest = std::ranges::max_element(points, {}, &Point::y);
    isPinned[static_cast<std::size_t>(highest - points.begin())] = true;
    for (int pass = 0; pass < passes; ++pass) {
        for (std::size_t i = 1; i + 1 < points.size(); ++i) {
            if (!isPinned[i])
                points[i].y = 0.25 * points[i - 1].y + 0.5 * points[i].y + 0.25 * points[i + 1].y;
        }
    }
    return points;
}

std::vector<double> monotoneTangents(const Points& points)
{
    if (points.size() < 2)
        return std::vector<double>(points.size(), 0.0);
    std::vector<double> slopes;
    for (std::size_t i = 0; i + 1 < points.size(); ++i)
        slopes.push_back(slope(points[i], points[i + 1]));
    std::vector<double> tangents{slopes.front()};
    for (std::size_t i = 1; i < slopes.size(); ++i) {
        const bool turns = slopes[i - 1] * slopes[i] <= 0;
        tangents.push_back(turns ? 0 : (slopes[i - 1] + slopes[i]) / 2);
    }
    tangents.push_back(slopes.back());
    for (std::size_t i = 0; i < slopes.size(); ++i) {
        const double a = slopes[i] == 0 ? 0 : tangents[i] / slopes[i];
        const double b = slopes[i] == 0 ? 0 : tangents[i + 1] / slopes[i];
        const double s = a * a + b * b;
        if (slopes[i] == 0 || !std::isfinite(s)) { // level, or beside a slope beyond all measure
            tangents[i] = tangents[i + 1] = 0;
        } else if (s > 9.0) {
            const double t = 3 / std::sqrt(s);
            tangents[i] = slopes[i] * a * t;
            tangents[i + 1] = slopes[i] * b * t;
        }
    }
    return tangents;
}

std::vector<Curve> curves(const Points& points)
{
    const auto tangents = monotoneTangents(points);
    std::vector<Curve> all;
    for (std::size_t i = 0; i + 1 < points.size(); ++i) {
        const Point& a = points[i];
        const Point& b = points[i + 1];
        const double h = (b.x - a.x) / 3;
        all.push_back(
            {a, {a.x + h, a.y + tangents[i] * h}, {b.x - h, b.y - h * tangents[i + 1]}, b});
    }
    return all;
}

std::vector<double> resetTicks(const UsageSamples& samples, std::string_view kind,
                               const TimeSpan& span)
{
    if (!(span.seconds() > 0))
        return {};
    const auto points = Sparkline::sortedPoints(samples, kind);
    std::vector<double> ticks;
    for (std::size_t i = 1; i < points.size(); ++i) {
        if (Sparkline::isReset(points[i - 1].y, points[i].y) && span.contains(points[i].at))
            ticks.push_back(span.position(points[i].at));
    }
    return ticks;
}

std::vector<double> dayBoundaries(const TimeSpan& span)
{
    if (!(span.seconds() > 0))
        return {};
    std::vector<double> boundaries;
    for (int day = 0;; ++day) {
        const auto start = LocalTime::startOfDay(span.start, day);
        if (!start || *start > span.end)
            return boundaries;
        if (*start > span.start && *start < span.end)
            boundaries.push_back(span.position(*start));
    }
}

} // namespace vellumor::HistoryChart
