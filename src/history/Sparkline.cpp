#include "history/Sparkline.h"

#include <algorithm>

namespace vellumor::Sparkline {

namespace {

std::size_t placeOf(const Percents& percents, std::string_view kind)
{
    std::size_t place = 0;
    while (place < percents.size() && percents.kindAt(place) != kind)
        ++place;
    return place;
}

// Neighbours share their list of kinds, as a rule, so the place in it is seldom looked for.
Run pointsOf(const UsageSamples& samples, std::string_view kind)
{
    Run points;
    points.reserve(samples.size());
    const std::string* known = nullptr; // the kind in the list of the sample before
    std::size_t place = 0;
    for (const UsageSample& sample : samples) {
        const Percents& percents = sample.percents;
        if (place >= percents.size() || &percents.kindAt(place) != known) {
            place = placeOf(percents, kind);
            known = place < percents.size() ? &percents.kindAt(place) : nullptr;
        }
        if (known != nullptr)
            points.push_back({sample.at, (*Percents::Iterator(percents, place)).second});
    }
    return points;
}

template <typename Moments>
std::vector<double> spacingsOf(const Moments& moments)
{
    std::vector<double> spacings;
    spacings.reserve(moments.size());
    for (std::size_t i = 1; i < moments.size(); ++i)
        spacings.push_back(secondsBetween(moments[i - 1].at, moments[i].at));
    return spacings;
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
    return gapThreshold(spacingsOf(samples));
}

std::vector<Run> runs(const UsageSamples& samples, std::string_view kind)
{
    const Run points = pointsOf(samples, kind);
    if (points.size() < 2)
        return {};
    const auto spacings = spacingsOf(points);
    const auto threshold = gapThreshold(spacings);
    std::vector<Run> found;
    auto first = points.begin();
    auto point = first;
    for (const double spacing : spacings) {
        ++point;
        if (threshold && spacing > *threshold) {
            found.emplace_back(first, point);
            first = point;
        }
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
