#include "history/HistoryCoverage.h"

#include "history/Sparkline.h"

#include <algorithm>

namespace vellumor::HistoryCoverage {

namespace {

std::vector<Instant> sortedMoments(const UsageSamples& samples)
{
    std::vector<Instant> moments;
    moments.reserve(samples.size());
    for (const UsageSample& sample : samples)
        moments.push_back(sample.at);
    std::ranges::sort(moments);
    return moments;
}

} // namespace

std::vector<TimeSpan> coveredIntervals(const UsageSamples& samples, const TimeSpan& span)
{
    const auto limit = Sparkline::gapThreshold(samples);
    if (!limit)
        return {};
    const auto moments = sortedMoments(samples);
    std::vector<TimeSpan> covered;
    for (std::size_t i = 1; i < moments.size(); ++i) {
        if (secondsBetween(moments[i - 1], moments[i]) > *limit)
            continue;
        const TimeSpan clipped{std::max(moments[i - 1], span.start),
                               std::min(moments[i], span.end)};
        if (!(clipped.end > clipped.start))
            continue;
        if (!covered.empty() && covered.back().end >= clipped.start)
            covered.back().end = std::max(covered.back().end, clipped.end);
        else
            covered.push_back(clipped);
    }
    return covered;
}

double fraction(const UsageSamples& samples, const TimeSpan& span)
{
    if (!(span.seconds() > 0))
        return 0;
    double watched = 0;
    for (const TimeSpan& stretch : coveredIntervals(samples, span))
        watched += stretch.seconds();
    return std::min(watched / span.seconds(), 1.0);
}

std::vector<Segment> stripSegments(const UsageSamples& samples, const TimeSpan& span)
{
    if (!(span.seconds() > 0))
        return {};
    std::vector<Segment> segments;
    for (const TimeSpan& stretch : coveredIntervals(samples, span))
        segments.push_back({span.position(stretch.start), span.position(stretch.end)});
    return segments;
}

std::optional<Peak> peak(const UsageSamples& samples, std::string_view kind, const TimeSpan& span)
{
    std::optional<Peak> highest;
    for (const UsageSample& sample : samples) {
        const double* percent = sample.percents.find(kind);
        if (percent != nullptr && span.contains(sample.at) &&
            (!highest || *percent > highest->percent))
            highest = Peak{*percent, sample.at};
    }
    return highest;
}

int observedResets(const UsageSamples& samples, std::string_view kind,
                   const std::optional<TimeSpan>& span)
{
    const auto points = Sparkline::sortedPoints(samples, kind);
    int resets = 0;
    for (std::size_t i = 1; i < points.size(); ++i) {
        if (Sparkline::isReset(points[i - 1].y, points[i].y) &&
            (!span || span->contains(points[i].at)))
            ++resets;
    }
    return resets;
}

} // namespace vellumor::HistoryCoverage
