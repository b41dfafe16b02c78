#include "base/SystemClock.h"

#include <gtest/gtest.h>

namespace vellumor::systemClockTest {

TEST(SystemClock, tellsTheWallClockInWholeMilliseconds)
{
    using std::chrono::milliseconds;
    for (int i = 0; i < 100; ++i) {
        const auto before = std::chrono::system_clock::now();
        const Instant now = systemNow();
        EXPECT_EQ(now, std::chrono::floor<milliseconds>(now));
        EXPECT_LT(before - now, milliseconds(1)); // cut, not rounded up
        EXPECT_LE(now, std::chrono::system_clock::now());
    }
}

} // namespace vellumor::systemClockTest
