#include "base/SystemClock.h"

namespace vellumor {

Instant systemNow()
{
    const auto now = std::chrono::system_clock::now();
    return std::chrono::floor<std::chrono::milliseconds>(now);
}

} // namespace vellumor
