#include "history/HistoryChart.h"

#include "base/LocalTime.h"
#include "history/Sparkline.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <utility>

namespace vellumor::HistoryChart {

namespace {

constexpr double pointsOfSpan = 80.0;
constexpr int passes = 2;

// Both sides of each fall.
std::vector<std::size_t> resetEdges(const Points& points)
{
    std::vector<std::size_t> edges;
    for (std::size_t i = 1; i < points.size(); ++i) {
        if (Sparkline::isReset(points[i - 1].y, points[i].y)) {
            edges.push_back(i - 1);
            edges.push_back(i);
        }
    }
    return edges;
}

// What is no number counts as 0.
double drawn(double percent)
{
    return percent > 0 ? std::min(percent, 100.0) : 0.0;
}

Points pointsWithin(const Sparkline::Run& run, const TimeSpan& span)
{
    Points points;
    points.reserve(run.size());
    for (const Sparkline::Point& point : run) {
        if (span.contains(point.at))
            points.push_back({span.position(point.at), drawn(point.y)});
    }
    return points;
}

std::size_t targetOf(const Points& points)
{
    const double target = std::trunc((points.back().x - points.front().x) * pointsOfSpan);
    return target <= 2 ? 2 : static_cast<std::size_t>(target);
}

// The thinned points and the edges that the thinning has dropped, by their place.
Points withEdges(Points thinned, const Points& all)
{
    std::set<std::pair<double, double>> there;
    for (const Point& point : thinned)
        there.emplace(point.x, point.y);
    for (const std::size_t edge : resetEdges(all)) {
        if (there.emplace(all[edge].x, all[edge].y).second)
            thinned.push_back(all[edge]);
    }
    std::ranges::stable_sort(thinned, {}, &Point::x);
    return thinned;
}

// The mean of the points from `begin` up to `end`, and at least of one.
Point meanOf(const Points& points, std::size_t begin, std::size_t end)
{
    begin = std::min(begin, points.size() - 1);
    end = std::clamp(end, begin + 1, points.size());
    Point mean;
    for (std::size_t i = begin; i < end; ++i) {
        mean.x += points[i].x;
        mean.y += points[i].y;
    }
    const auto count = static_cast<double>(end - begin);
    return {mean.x / count, mean.y / count};
}

double doubledArea(const Point& a, const Point& p, const Point& m)
{
    return std::abs((a.x - m.x) * (p.y - a.y) - (m.y - a.y) * (a.x - p.x));
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
    if (!(span.seconds() > 0))
        return {};
    std::vector<Points> found;
    for (const Sparkline::Run& run : Sparkline::runs(samples, kind)) {
        const Points points = pointsWithin(run, span);
        if (points.size() >= 2)
            found.push_back(relaxed(withEdges(downsample(points, targetOf(points)), points)));
    }
    return found;
}

Points downsample(const Points& points, std::size_t count)
{
    const std::size_t c = points.size();
    if (count < 2 || c <= count)
        return points;
    if (count == 2)
        return {points.front(), points.back()};
    const double width = static_cast<double>(c - 2) / static_cast<double>(count - 2);
    const auto bound = [width](std::size_t bucket) {
        return static_cast<std::size_t>(std::trunc(width * static_cast<double>(bucket))) + 1;
    };
    Points kept{points.front()};
    for (std::size_t bucket = 0; bucket + 2 < count; ++bucket) {
        const std::size_t begin = bound(bucket);
        const std::size_t end = std::min(c - 1, bound(bucket + 1));
        if (begin >= end)
            continue;
        const bool isLast = bucket + 3 == count;
        const Point mean = meanOf(points, end, isLast ? c : std::min(c, bound(bucket + 2)));
        std::size_t best = begin;
        double largest = -1;
        for (std::size_t i = begin; i < end; ++i) {
            const double area = doubledArea(kept.back(), points[i], mean);
            if (area > largest) {
                largest = area;
                best = i;
            }
        }
        kept.push_back(points[best]);
    }
    kept.push_back(points.back());
    return kept;
}

Points relaxed(Points points)
{
    if (points.size() < 3)
        return points;
    std::vector<bool> isPinned(points.size(), false);
    isPinned.front() = isPinned.back() = true;
    for (const std::size_t edge : resetEdges(points))
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
