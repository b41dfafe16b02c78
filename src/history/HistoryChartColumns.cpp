#include "history/HistoryChartColumns.h"

#include "history/Sparkline.h"

#include <algorithm>
#include <cstdint>
#include <type_traits>

namespace vellumor::HistoryChart {

namespace {

// So many samples are read at a time. It must be small: while the divisions of one block are under
// way, and nothing is slower, the numbers of the next one are fetched.
constexpr std::size_t blockSize = 16;

// What is no number counts as 0.
double drawn(double percent)
{
    const double positive = percent > 0 ? percent : 0.0;
    return positive < 100.0 ? positive : 100.0;
}

// A sign for each, and no branch: this goes over all of a week.
bool areWithin(std::span<const Instant> moments, const TimeSpan& span)
{
    std::int64_t signs = 0;
    for (const Instant moment : moments)
        signs |= (moment - span.start).count() | (span.end - moment).count();
    return signs >= 0;
}

// Whether each kind stands at its place.
bool areAt(const std::vector<std::size_t>& places, std::span<const std::string_view> kinds,
           const Percents& percents)
{
    if (places.size() < kinds.size())
        return false;
    for (std::size_t i = 0; i < kinds.size(); ++i) {
        if (places[i] >= percents.size() || percents.kindAt(places[i]) != kinds[i])
            return false;
    }
    return true;
}

// The places of those kinds that have an entry. As a rule they are what they were, in another list
// too.
void findPlaces(std::span<const std::string_view> kinds, const Percents& percents,
                std::vector<std::size_t>& places)
{
    if (areAt(places, kinds, percents))
        return;
    places.clear();
    for (const std::string_view kind : kinds) {
        if (const auto place = percents.indexOf(kind))
            places.push_back(*place);
    }
}

// How many of the first samples have one list of kinds, up to a block.
std::size_t alikeFrom(std::span<const UsageSample> samples)
{
    const std::size_t most = std::min(blockSize, samples.size());
    std::size_t count = 1;
    while (count < most && samples[count].percents.sharesKindsOf(samples.front().percents))
        ++count;
    return count;
}

} // namespace

Columns::Columns(const UsageSamples& samples, std::span<const std::string_view> kinds,
                 const TimeSpan& span)
    : m_span(span)
    , m_moments(samples.size())
    , m_places(std::make_unique_for_overwrite<double[]>(samples.size()))
{
    for (std::size_t kind = 0; kind < kinds.size(); ++kind)
        m_heights.push_back(std::make_unique_for_overwrite<double[]>(samples.size()));
    const Samples all(samples);
    std::vector<std::size_t> places;
    for (std::size_t begin = 0; begin < all.size();) {
        const Percents& percents = all[begin].percents;
        if (begin == 0 || !percents.sharesKindsOf(all[begin - 1].percents)) [[unlikely]]
            findPlaces(kinds, percents, places);
        const Samples alike = all.subspan(begin, alikeFrom(all.subspan(begin)));
        if (places.size() < kinds.size())
            m_isRagged = m_isRagged || !places.empty();
        else if (alike.size() == blockSize)
            read(alike, std::integral_constant<std::size_t, blockSize>(), places);
        else
            read(alike, alike.size(), places);
        begin += alike.size();
    }
    m_moments.resize(m_size);
}

// `count` is the number of the samples, known to the compiler for a whole block.
template <typename Count>
void Columns::read(Samples samples, Count count, const std::vector<std::size_t>& places)
{
    const Instant start = m_span.start;
    const double length = m_span.seconds();
    Instant* const moments = m_moments.data() + m_size;
    double* const along = m_places.get() + m_size;
    constexpr auto second = static_cast<double>(Instant::duration::period::den);
    for (std::size_t i = 0; i < count; ++i)
        moments[i] = samples[i].at;
    for (std::size_t i = 0; i < count; ++i)
        along[i] = static_cast<double>((moments[i] - start).count());
    for (std::size_t i = 0; i < count; ++i)
        along[i] = along[i] / second / length;
    for (std::size_t kind = 0; kind < places.size(); ++kind) {
        const std::size_t place = places[kind];
        double* const heights = m_heights[kind].get() + m_size;
        for (std::size_t i = 0; i < count; ++i)
            heights[i] = drawn(samples[i].percents.at(place));
    }
    m_size += count;
}

std::vector<Columns::Rows> Columns::stretches()
{
    std::vector<Rows> stretches;
    std::size_t begin = 0;
    const auto add = [&](std::size_t end) {
        const Rows rows = narrowed({begin, end});
        if (rows.size() >= 2)
            stretches.push_back(rows);
        begin = end;
    };
    for (const std::size_t hole : Sparkline::holes(m_moments))
        add(hole);
    add(m_size);
    return stretches;
}

Columns::Rows Columns::narrowed(Rows run)
{
    while (run.size() > 0 && !m_span.contains(m_moments[run.begin]))
        ++run.begin;
    if (areWithin(std::span(m_moments).subspan(run.begin, run.size()), m_span))
        return run;
    std::size_t end = run.begin;
    for (std::size_t row = run.begin; row < run.end; ++row) {
        if (m_span.contains(m_moments[row]))
            copyRow(row, end++);
    }
    return {run.begin, end};
}

void Columns::copyRow(std::size_t from, std::size_t to)
{
    m_moments[to] = m_moments[from];
    m_places[to] = m_places[from];
    for (const Column& heights : m_heights)
        heights[to] = heights[from];
}

} // namespace vellumor::HistoryChart
