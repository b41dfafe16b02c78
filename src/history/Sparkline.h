#pragma once

#include "history/UsageSample.h"

#include <optional>
#include <span>
#include <string_view>
#include <vector>

// Sparkline: the unbroken stretches of one window's history. Pure. Samples may come in any order,
// as a clock that was set back leaves them.
namespace vellumor::Sparkline {

struct Point {
    Instant at{};
    double y = 0; // percent
    bool operator==(const Point&) const = default;
};
using Run = std::vector<Point>;

// How many seconds may lie between two neighbours before there is a hole between them: twice the
// typical spacing, so that a hole is judged by the account's own cadence. Nothing when no sample
// comes after another.
[[nodiscard]] std::optional<double> gapThreshold(const UsageSamples& samples);
// The same from spacings; those that are not above zero do not count.
[[nodiscard]] std::optional<double> gapThreshold(std::vector<double> spacings);

// Where a hole ends: the places of the moments that begin a new run.
[[nodiscard]] std::vector<std::size_t> holes(std::span<const Instant> moments);

// The samples that have an entry for `kind`, parted where there is a hole. None for fewer than two.
[[nodiscard]] std::vector<Run> runs(const UsageSamples& samples, std::string_view kind);

// Whether a percent has fallen by more than what is rounding at the source.
[[nodiscard]] inline bool isReset(double before, double after)
{
    return after < before - 1.0;
}

// The samples with an entry for `kind` by their time, as points.
[[nodiscard]] Run sortedPoints(const UsageSamples& samples, std::string_view kind);

} // namespace vellumor::Sparkline
