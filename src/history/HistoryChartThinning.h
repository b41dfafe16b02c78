#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace vellumor::HistoryChart {

// Chooses those points of a line that shape it most: largest triangle, three buckets (Steinarsson,
// 2013). Whatever hangs on the places along the line alone is worked out once, for all lines that
// share them. For HistoryChart alone. Pure.
class Thinning {
public:
    // To at most `count` points. The places outlive it.
    Thinning(std::span<const double> xs, std::size_t count);

    // The indices of the points that stay, rising; `ys` are their heights, one for each place.
    [[nodiscard]] std::vector<std::size_t> kept(std::span<const double> ys) const;

private:
    [[nodiscard]] std::vector<double> means(std::span<const double> values) const;
    void areasWith(std::size_t before, std::size_t bucket, double meanY, std::span<const double> ys,
                   std::vector<double>& areas) const;

    std::span<const double> m_xs;
    std::size_t m_count;
    // Where each bucket begins; then where the last one ends, and then all points.
    std::vector<std::size_t> m_bounds;
    std::vector<double> m_meanXs; // of the points behind each bucket
};

} // namespace vellumor::HistoryChart
