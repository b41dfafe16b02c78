#pragma once

#include <limits>

namespace vellumor {

// What was counted since the last daily event.
struct TelemetryCounters {
    int popoverOpens = 0;
    int failures = 0;
    int reviveUnavailable = 0;
    int notifications = 0;
    bool operator==(const TelemetryCounters&) const = default;
};

// One more, but never beyond what a count can hold: the number may come from a file.
inline void addOne(int& count)
{
    if (count < std::numeric_limits<int>::max())
        ++count;
}

} // namespace vellumor
