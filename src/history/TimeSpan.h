#pragma once

#include "base/Instant.h"

namespace vellumor {

// From one moment to another.
struct TimeSpan {
    Instant start{};
    Instant end{};

    bool operator==(const TimeSpan&) const = default;

    [[nodiscard]] double seconds() const { return secondsBetween(start, end); }
    // Bounds included.
    [[nodiscard]] bool contains(Instant moment) const { return start <= moment && moment <= end; }
    // 0 at the start, 1 at the end.
    [[nodiscard]] double position(Instant moment) const
    {
        return secondsBetween(start, moment) / seconds();
    }
};

} // namespace vellumor
