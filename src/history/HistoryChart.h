#pragma once

#include "history/TimeSpan.h"
#include "history/UsageSample.h"

#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

// HistoryChart: a week of samples as curves that can be drawn. A hole stays a hole and a reset a
// visible fall. A line is thinned first, which may drop its highest point, a short line's above
// all: of one of less than three eightieths of the span the ends and the resets are left. The
// highest point that is left is not smoothed away. Pure, but for the time zone.
namespace vellumor::HistoryChart {

struct Point {
    double x = 0; // along the span, 0 to 1
    double y = 0; // percent, 0 to 100
    bool operator==(const Point&) const = default;
};
using Points = std::vector<Point>;

// A cubic Bézier segment from p0 to p1.
struct Curve {
    Point p0;
    Point c1;
    Point c2;
    Point p1;
    bool operator==(const Curve&) const = default;
};

// One list of points for each unbroken stretch within the span, thinned to about 80 points for the
// whole span, and calmed.
[[nodiscard]] std::vector<Points> segments(const UsageSamples& samples, std::string_view kind,
                                           const TimeSpan& span);
// The same for each of several kinds, for little more than the cost of one.
[[nodiscard]] std::vector<std::vector<Points>>
segmentsOfKinds(const UsageSamples& samples, std::span<const std::string_view> kinds,
                const TimeSpan& span);

// At most `count` of the points, those that shape the line most: largest triangle, three buckets
// (Steinarsson, 2013).
[[nodiscard]] Points downsample(const Points& points, std::size_t count);
// Without the jitter; the ends, both sides of a reset and the highest point stay where they are.
[[nodiscard]] Points relaxed(Points points);
// Slopes at the points with which a cubic never leaves the range of its two ends (Fritsch and
// Carlson, 1980).
[[nodiscard]] std::vector<double> monotoneTangents(const Points& points);
// One curve between each two neighbours.
[[nodiscard]] std::vector<Curve> curves(const Points& points);

// Where along the span a reset was seen.
[[nodiscard]] std::vector<double> resetTicks(const UsageSamples& samples, std::string_view kind,
                                             const TimeSpan& span);
// Where along the span a day begins in the user's time zone.
[[nodiscard]] std::vector<double> dayBoundaries(const TimeSpan& span);

} // namespace vellumor::HistoryChart
