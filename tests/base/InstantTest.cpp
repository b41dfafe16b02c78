#include "base/Instant.h"

#include <gtest/gtest.h>

#include <limits>

namespace vellumor::instantTest {

using std::chrono::microseconds;

TEST(Instant, secondsKeepTheirFraction)
{
    EXPECT_EQ(secondsSince1970(Instant(microseconds(1500000))), 1.5);
    EXPECT_EQ(secondsSince1970(Instant(microseconds(-250000))), -0.25);
    EXPECT_EQ(instantFromSeconds(1772357400.125), Instant(microseconds(1772357400125000)));
}

TEST(Instant, secondsAreRoundedToTheMicrosecond)
{
    EXPECT_EQ(instantFromSeconds(0.0000004), Instant(microseconds(0)));
    EXPECT_EQ(instantFromSeconds(0.0000006), Instant(microseconds(1)));
    EXPECT_EQ(instantFromSeconds(-0.0000006), Instant(microseconds(-1)));
}

TEST(Instant, secondsBeyondTheYears1To9999GiveTheNearerEnd)
{
    const Instant first(std::chrono::seconds(-62135596800));
    const Instant last(std::chrono::seconds(253402300799));
    constexpr double infinity = std::numeric_limits<double>::infinity();
    for (const double seconds : {-62135596800.0, -62135596801.0, -1e300, -infinity}) {
        SCOPED_TRACE(seconds);
        EXPECT_EQ(instantFromSeconds(seconds), first);
    }
    for (const double seconds : {253402300799.0, 253402300800.0, 1e300, infinity}) {
        SCOPED_TRACE(seconds);
        EXPECT_EQ(instantFromSeconds(seconds), last);
    }
    EXPECT_EQ(instantFromSeconds(std::numeric_limits<double>::quiet_NaN()), first);
}

TEST(Instant, whatLiesBetweenIsNegativeWhenTheMomentsStandTheOtherWayRound)
{
    const Instant earlier(microseconds(1000000));
    const Instant later(microseconds(3500000));
    EXPECT_EQ(secondsBetween(earlier, later), 2.5);
    EXPECT_EQ(secondsBetween(later, earlier), -2.5);
    EXPECT_EQ(secondsBetween(later, later), 0.0);
}

} // namespace vellumor::instantTest
