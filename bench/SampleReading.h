#pragma once

#include "usage/model/Usage.h"

namespace vellumor::bench {

// A reading of three limits, whose percents differ from number to number.
inline Usage sampleReading(Instant at, int number)
{
    Usage usage;
    usage.fetchedAt = at;
    double percent = 0.25 * (number % 400);
    for (const char* kind : {"session", "weekly_all", "seven_day_opus"}) {
        LimitWindow window;
        window.kind = kind;
        window.percent = percent += 0.5;
        usage.windows.push_back(std::move(window));
    }
    return usage;
}

} // namespace vellumor::bench
