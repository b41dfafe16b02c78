#pragma once

#include "history/TimeSpan.h"
#include "history/UsageSample.h"

#include <optional>
#include <string_view>
#include <vector>

// HistoryCoverage: how much of a span was watched, and what was seen in it. The program samples
// only while it runs and the machine is awake; here is said no more than the samples prove. Pure.
namespace vellumor::HistoryCoverage {

// A stretch of a strip from 0 to 1.
struct Segment {
    double from = 0;
    double to = 0;
    bool operator==(const Segment&) const = default;
};

struct Peak {
    double percent = 0;
    Instant at{};
    bool operator==(const Peak&) const = default;
};

// The watched stretches within `span`, in their order, none touching another.
[[nodiscard]] std::vector<TimeSpan> coveredIntervals(const UsageSamples& samples,
                                                     const TimeSpan& span);
// Their part of the span, 0 to 1; 0 for a span without length.
[[nodiscard]] double fraction(const UsageSamples& samples, const TimeSpan& span);
// Their places along the span.
[[nodiscard]] std::vector<Segment> stripSegments(const UsageSamples& samples, const TimeSpan& span);

// The highest percent of `kind` within the span, bounds included; of equal ones the first.
[[nodiscard]] std::optional<Peak> peak(const UsageSamples& samples, std::string_view kind,
                                       const TimeSpan& span);
// How often the percent of `kind` was seen to fall, at least: a reset in the dark may not show.
// With a span: of those falls whose end lies in it.
[[nodiscard]] int observedResets(const UsageSamples& samples, std::string_view kind,
                                 const std::optional<TimeSpan>& span);

} // namespace vellumor::HistoryCoverage
