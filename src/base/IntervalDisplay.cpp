#include "base/IntervalDisplay.h"

#include <fmt/format.h>

#include <cmath>

namespace vellumor::IntervalDisplay {

std::string shortText(double seconds)
{
    const long long whole = std::llround(seconds);
    if (whole < 60)
        return fmt::format("{}s", whole);
    if (whole % 60 == 0)
        return fmt::format("{} min", whole / 60);
    return fmt::format("{} min {}s", whole / 60, whole % 60);
}

} // namespace vellumor::IntervalDisplay
