#pragma once

#include "history/TimeSpan.h"
#include "history/UsageSample.h"

#include <cstddef>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

namespace vellumor::HistoryChart {

// The samples that have an entry for each of some kinds, as columns of numbers: a chart goes over a
// week several times, and going over a column costs a fraction of going over the samples. For
// HistoryChart alone. Pure.
class Columns {
public:
    // A stretch without holes: the rows from `begin` up to `end`.
    struct Rows {
        std::size_t begin = 0;
        std::size_t end = 0;
        [[nodiscard]] std::size_t size() const { return end - begin; }
        bool operator==(const Rows&) const = default;
    };

    // `span` has a length.
    Columns(const UsageSamples& samples, std::span<const std::string_view> kinds,
            const TimeSpan& span);

    // Whether some sample has an entry for some of the kinds only: it is left out, so that no kind
    // is told in full.
    [[nodiscard]] bool isRagged() const { return m_isRagged; }

    // Leaves the rows within the span, and tells the stretches of two and more of them. The holes
    // between them are those of all rows.
    [[nodiscard]] std::vector<Rows> stretches();

    // Where along the span the rows stand.
    [[nodiscard]] std::span<const double> places(const Rows& rows) const
    {
        return {m_places.get() + rows.begin, rows.size()};
    }
    // The percents of the kind at that place of the list, from 0 to 100; 0 for what is no number.
    [[nodiscard]] std::span<const double> heights(const Rows& rows, std::size_t kind) const
    {
        return {m_heights[kind].get() + rows.begin, rows.size()};
    }

private:
    using Column = std::unique_ptr<double[]>; // filled up to m_size
    using Samples = std::span<const UsageSample>;

    template <typename Count>
    void read(Samples samples, Count count, const std::vector<std::size_t>& places);
    // The rows of a run that lie within the span, side by side.
    [[nodiscard]] Rows narrowed(Rows run);
    void copyRow(std::size_t from, std::size_t to);

    TimeSpan m_span;
    std::vector<Instant> m_moments;
    Column m_places;
    std::vector<Column> m_heights; // by the place of the kind
    std::size_t m_size = 0;
    bool m_isRagged = false;
};

} // namespace vellumor::HistoryChart
