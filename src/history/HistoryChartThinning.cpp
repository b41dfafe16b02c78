#include "history/HistoryChartThinning.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>

namespace vellumor::HistoryChart {

namespace {

// So many sums go on side by side: each alone would wait for the one before it.
constexpr std::size_t lanes = 4;
constexpr std::size_t compared = 16;

double greater(double a, double b)
{
    return a > b ? a : b;
}

double largestOf(std::span<const double, compared> values)
{
    std::array<double, 8> eight;
    std::array<double, 4> four;
    for (std::size_t i = 0; i < 8; ++i)
        eight[i] = greater(values[i], values[i + 8]);
    for (std::size_t i = 0; i < 4; ++i)
        four[i] = greater(eight[i], eight[i + 4]);
    return greater(greater(four[0], four[1]), greater(four[2], four[3]));
}

// Of equal ones the first.
std::size_t indexOfLargest(std::span<const double> values)
{
    double largest = -1;
    std::size_t found = 0; // or a few places before it
    std::size_t i = 0;
    const auto compare = [&](double here) {
        found = here > largest ? i : found;
        largest = here > largest ? here : largest;
    };
    for (; i + compared <= values.size(); i += compared)
        compare(largestOf(values.subspan(i).first<compared>()));
    for (; i < values.size(); ++i)
        compare(values[i]);
    const auto place = std::ranges::find(values.subspan(found), largest);
    return place == values.end() ? 0 : static_cast<std::size_t>(place - values.begin());
}

} // namespace

Thinning::Thinning(std::span<const double> xs, std::size_t count)
    : m_xs(xs)
    , m_count(count)
{
    const std::size_t c = xs.size();
    if (count <= 2 || c <= count)
        return;
    const double width = static_cast<double>(c - 2) / static_cast<double>(count - 2);
    for (std::size_t bucket = 0; bucket + 2 <= count; ++bucket) {
        const double bound = std::trunc(width * static_cast<double>(bucket)) + 1;
        m_bounds.push_back(std::min(c - 1, static_cast<std::size_t>(bound)));
    }
    m_bounds.push_back(c);
    m_meanXs = means(xs);
}

std::vector<std::size_t> Thinning::kept(std::span<const double> ys) const
{
    const std::size_t c = m_xs.size();
    if (m_count < 2 || c <= m_count) {
        std::vector<std::size_t> all(c);
        std::iota(all.begin(), all.end(), std::size_t{0});
        return all;
    }
    std::vector<std::size_t> kept{0};
    kept.reserve(m_count);
    const auto meanYs = means(ys);
    std::vector<double> areas;
    for (std::size_t bucket = 0; bucket < meanYs.size(); ++bucket) {
        areasWith(kept.back(), bucket, meanYs[bucket], ys, areas);
        kept.push_back(m_bounds[bucket] + indexOfLargest(areas));
    }
    kept.push_back(c - 1);
    return kept;
}

// Of the points from the end of each bucket up to the end of the next one.
std::vector<double> Thinning::means(std::span<const double> values) const
{
    const std::size_t buckets = m_bounds.size() < 2 ? 0 : m_bounds.size() - 2;
    std::vector<double> means(buckets);
    for (std::size_t first = 0; first < buckets; first += lanes) {
        std::array<std::span<const double>, lanes> ranges;
        for (std::size_t lane = 0; lane < lanes; ++lane) {
            const std::size_t bucket = std::min(first + lane, buckets - 1);
            ranges[lane] =
                values.subspan(m_bounds[bucket + 1], m_bounds[bucket + 2] - m_bounds[bucket + 1]);
        }
        const std::size_t shortest =
            std::ranges::min(ranges, {}, &std::span<const double>::size).size();
        std::array<double, lanes> sums{};
        for (std::size_t i = 0; i < shortest; ++i) {
            for (std::size_t lane = 0; lane < lanes; ++lane)
                sums[lane] += ranges[lane][i];
        }
        for (std::size_t lane = 0; lane < lanes && first + lane < buckets; ++lane) {
            const auto rest = ranges[lane].subspan(shortest);
            const double sum = std::accumulate(rest.begin(), rest.end(), sums[lane]);
            means[first + lane] = sum / static_cast<double>(ranges[lane].size());
        }
    }
    return means;
}

// Of the triangles that the points of the bucket make with the one chosen before and the mean of
// those behind, doubled.
void Thinning::areasWith(std::size_t before, std::size_t bucket, double meanY,
                         std::span<const double> ys, std::vector<double>& areas) const
{
    const std::size_t begin = m_bounds[bucket];
    areas.resize(m_bounds[bucket + 1] - begin);
    const double x = m_xs[before];
    const double y = ys[before];
    const double width = x - m_meanXs[bucket];
    const double rise = meanY - y;
    for (std::size_t i = 0; i < areas.size(); ++i)
        areas[i] = std::abs(width * (ys[begin + i] - y) + rise * (m_xs[begin + i] - x));
}

} // namespace vellumor::HistoryChart
