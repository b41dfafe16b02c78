#include "history/Sparkline.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace vellumor::Sparkline {

namespace {

// Neighbours share their list of kinds, as a rule, so the place in it is seldom looked for.
Run pointsOf(const UsageSamples& samples, std::string_view kind)
{
    Run points;
    points.reserve(samples.size());
    const Percents* before = nullptr;
    std::optional<std::size_t> place;
    for (const UsageSample& sample : samples) {
        const Percents& percents = sample.percents;
        if (before == nullptr || !percents.sharesKindsOf(*before))
            place = percents.indexOf(kind);
        before = &percents;
        if (place)
            points.push_back({sample.at, percents.at(*place)});
    }
    return points;
}

std::vector<Instant> momentsOf(const auto& points)
{
    std::vector<Instant> moments;
    moments.reserve(points.size());
    for (const auto& point : points)
        moments.push_back(point.at);
    return moments;
}

std::vector<double> spacingsOf(std::span<const Instant> moments)
{
    std::vector<double> spacings;
    spacings.reserve(moments.size());
    for (std::size_t i = 1; i < moments.size(); ++i)
        spacings.push_back(secondsBetween(moments[i - 1], moments[i]));
    return spacings;
}

std::int64_t spacingAt(std::span<const Instant> moments, std::size_t i)
{
    return (moments[i] - moments[i - 1]).count();
}

// The middle one of a few spacings, which is near the typical one as a rule. There are two moments
// at least.
std::int64_t likelySpacing(std::span<const Instant> moments)
{
    std::array<std::int64_t, 9> some{};
    for (std::size_t i = 0; i < some.size(); ++i)
        some[i] = spacingAt(moments, 1 + i * (moments.size() - 1) / some.size());
    std::ranges::nth_element(some, some.begin() + some.size() / 2);
    return some[some.size() / 2];
}

// The sign of a number, so that counting needs no branch.
std::size_t isNegative(std::int64_t number)
{
    return static_cast<std::uint64_t>(number) >> 63U;
}

// Whether the typical spacing lies from `least` to twice that. `longer` counts those beyond.
bool isTypicalWithin(std::span<const Instant> moments, std::int64_t least, std::size_t& longer)
{
    std::size_t notAbove = 0; // zero: they do not count
    std::size_t shorter = 0;  // those included
    std::size_t beyond = 0;
    for (std::size_t i = 1; i < moments.size(); ++i) {
        const std::int64_t spacing = spacingAt(moments, i);
        notAbove += isNegative(spacing - 1);
        shorter += isNegative(spacing - least);
        beyond += isNegative(2 * least - spacing);
    }
    longer = beyond;
    const std::size_t counting = moments.size() - 1 - notAbove;
    return shorter - notAbove <= counting / 2 && counting / 2 < counting - beyond;
}

// The holes as far as they can be told without the typical spacing, of which it is enough to know
// the bounds, unless there is a spacing of about twice the typical one: to find that costs more
// than all else that a chart needs.
std::optional<std::vector<std::size_t>> plainHoles(std::span<const Instant> moments)
{
    const std::int64_t least = likelySpacing(moments) / 3 * 2;
    std::size_t longer = 0;
    if (least <= 0 || !isTypicalWithin(moments, least, longer))
        return std::nullopt;
    const double mostThreshold =
        2 * secondsBetween(Instant(), Instant() + Instant::duration(2 * least));
    std::vector<std::size_t> found;
    for (std::size_t i = 1; found.size() < longer; ++i) {
        if (spacingAt(moments, i) <= 2 * least)
            continue;
        if (!(secondsBetween(moments[i - 1], moments[i]) > mostThreshold))
            return std::nullopt;
        found.push_back(i);
    }
    return found;
}

} // namespace

std::optional<double> gapThreshold(std::vector<double> spacings)
{
    std::erase_if(spacings, [](double spacing) { return !(spacing > 0); });
    if (spacings.empty())
        return std::nullopt;
    const auto middle = spacings.begin() + static_cast<std::ptrdiff_t>(spacings.size() / 2);
    std::nth_element(spacings.begin(), middle, spacings.end());
    return 2 * *middle;
}

std::optional<double> gapThreshold(const UsageSamples& samples)
{
    return gapThreshold(spacingsOf(momentsOf(samples)));
}

std::vector<std::size_t> holes(std::span<const Instant> moments)
{
    if (moments.size() < 2)
        return {};
    if (auto plain = plainHoles(moments))
        return *std::move(plain);
    const auto spacings = spacingsOf(moments);
    const auto threshold = gapThreshold(spacings);
    std::vector<std::size_t> found;
    for (std::size_t i = 0; i < spacings.size(); ++i) {
        if (threshold && spacings[i] > *threshold)
            found.push_back(i + 1);
    }
    return found;
}

std::vector<Run> runs(const UsageSamples& samples, std::string_view kind)
{
    const Run points = pointsOf(samples, kind);
    if (points.size() < 2)
        return {};
    std::vector<Run> found;
    auto first = points.begin();
    for (const std::size_t hole : holes(momentsOf(points))) {
        const auto next = points.begin() + static_cast<std::ptrdiff_t>(hole);
        found.emplace_back(first, next);
        first = next;
    }
    found.emplace_back(first, points.end());
    return found;
}

Run sortedPoints(const UsageSamples& samples, std::string_view kind)
{
    Run points = pointsOf(samples, kind);
    std::ranges::stable_sort(points, {}, &Point::at);
    return points;
}

} // namespace vellumor::Sparkline
