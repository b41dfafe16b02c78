#include "base/Instant.h"

#include <cmath>

namespace vellumor {

namespace {

constexpr double earliest = -62135596800.0; // 0001-01-01T00:00:00Z
constexpr double latest = 253402300799.0;   // 9999-12-31T23:59:59Z

} // namespace

double secondsSince1970(Instant instant)
{
    return std::chrono::duration<double>(instant.time_since_epoch()).count();
}

Instant instantFromSeconds(double secondsSince1970)
{
    const double held = std::fmin(std::fmax(earliest, secondsSince1970), latest);
    return Instant(std::chrono::microseconds(std::llround(held * 1e6)));
}

double secondsBetween(Instant earlier, Instant later)
{
    return std::chrono::duration<double>(later - earlier).count();
}

} // namespace vellumor
