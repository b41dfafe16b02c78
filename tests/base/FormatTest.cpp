#include "base/Format.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace vellumor::formatTest {

using std::chrono::seconds;

namespace {

Instant at(long long secondsSince1970)
{
    return Instant(seconds(secondsSince1970));
}

} // namespace

TEST(Format, aTimeLeftIsToldByItsLargestUnits)
{
    struct Row {
        long long left;
        const char* text;
    };
    const Row rows[] = {
        {-86400, "now"},  {-1, "now"},        {0, "now"},       {1, "1m"},
        {59, "1m"},       {60, "1m"},         {119, "1m"},      {120, "2m"},
        {3599, "59m"},    {3600, "1h 0m"},    {3660, "1h 1m"},  {86399, "23h 59m"},
        {86400, "1d 0h"}, {90000, "1d 1h"},   {89999, "1d 0h"}, {604800, "7d 0h"},
        {3719, "1h 1m"},  {172799, "1d 23h"},
    };
    for (const auto& [left, text] : rows) {
        SCOPED_TRACE(left);
        EXPECT_EQ(Format::countdown(at(1000000 + left), at(1000000)), text);
    }
}

TEST(Format, aTimeLeftIsRoundedToWholeSecondsFirst)
{
    using std::chrono::milliseconds;
    EXPECT_EQ(Format::countdown(at(0) + milliseconds(499), at(0)), "now");
    EXPECT_EQ(Format::countdown(at(0) + milliseconds(500), at(0)), "1m");
    EXPECT_EQ(Format::countdown(at(119) + milliseconds(499), at(0)), "1m");
    EXPECT_EQ(Format::countdown(at(119) + milliseconds(500), at(0)), "2m");
    EXPECT_EQ(Format::countdown(at(3599) + milliseconds(500), at(0)), "1h 0m");
}

TEST(Format, anAgeIsToldByItsLargestUnitAlone)
{
    struct Row {
        long long age;
        const char* text;
    };
    const Row rows[] = {
        {-3600, "just now"}, {0, "just now"},    {59, "just now"},    {60, "1m ago"},
        {119, "1m ago"},     {3599, "59m ago"},  {3600, "1h ago"},    {86399, "23h ago"},
        {86400, "1d ago"},   {172799, "1d ago"}, {864000, "10d ago"},
    };
    for (const auto& [age, text] : rows) {
        SCOPED_TRACE(age);
        EXPECT_EQ(Format::relativeAge(at(1000000), at(1000000 + age)), text);
    }
}

TEST(Format, anAgeIsRoundedToWholeSecondsFirst)
{
    using std::chrono::milliseconds;
    EXPECT_EQ(Format::relativeAge(at(0), at(59) + milliseconds(499)), "just now");
    EXPECT_EQ(Format::relativeAge(at(0), at(59) + milliseconds(500)), "1m ago");
}

TEST(Format, aPercentIsRoundedHalvesAwayFromZeroAndNeverNegative)
{
    struct Row {
        double percent;
        const char* text;
    };
    const Row rows[] = {
        {-3, "0%"},
        {-0.0, "0%"},
        {-0.4, "0%"},
        {0, "0%"},
        {0.49, "0%"},
        {0.5, "1%"},
        {1.5, "2%"},
        {2.5, "3%"},
        {42, "42%"},
        {99.4, "99%"},
        {99.5, "100%"},
        {250, "250%"},
        {1e15, "1000000000000000%"},
    };
    for (const auto& [percent, text] : rows) {
        SCOPED_TRACE(percent);
        EXPECT_EQ(Format::percentText(percent), text);
    }
    EXPECT_EQ(Format::percentText(std::numeric_limits<double>::quiet_NaN()), "0%");
}

TEST(Format, aWholeNumberIsRoundedHalvesAwayFromZeroAndKeepsItsSign)
{
    const std::pair<double, const char*> rows[] = {
        {0, "0"},
        {-0.0, "0"},
        {0.4, "0"},
        {-0.4, "0"},
        {0.5, "1"},
        {-0.5, "-1"},
        {1.5, "2"},
        {2.5, "3"},
        {-2.5, "-3"},
        {62.49, "62"},
        {99.5, "100"},
        {-3, "-3"},
        {1e6, "1000000"},
        {0.49999999999999994, "0"},
        {1e15, "1000000000000000"},
    };
    for (const auto& [value, text] : rows) {
        SCOPED_TRACE(value);
        EXPECT_EQ(Format::wholeText(value), text);
    }
}

TEST(Format, instantsAreWrittenInUtcWithThreeDigitsThatAreCutAndNotRounded)
{
    using std::chrono::microseconds;
    const Instant base = at(1772357400); // 2026-03-01T09:30:00Z
    EXPECT_EQ(Format::isoFractional(base), "2026-03-01T09:30:00.000Z");
    EXPECT_EQ(Format::isoFractional(base + microseconds(125000)), "2026-03-01T09:30:00.125Z");
    EXPECT_EQ(Format::isoFractional(base + microseconds(125999)), "2026-03-01T09:30:00.125Z");
    EXPECT_EQ(Format::isoFractional(base + microseconds(999999)), "2026-03-01T09:30:00.999Z");
    EXPECT_EQ(Format::isoWholeSeconds(base + microseconds(999999)), "2026-03-01T09:30:00Z");
}

TEST(Format, instantsBefore1970AreCutTowardsThePastToo)
{
    EXPECT_EQ(Format::isoFractional(Instant(std::chrono::microseconds(-1))),
              "1969-12-31T23:59:59.999Z");
    EXPECT_EQ(Format::isoWholeSeconds(Instant(std::chrono::microseconds(-1))),
              "1969-12-31T23:59:59Z");
}

TEST(Format, theEndsOfTheYearsAreWrittenInFourDigits)
{
    EXPECT_EQ(Format::isoWholeSeconds(at(-62135596800)), "0001-01-01T00:00:00Z");
    EXPECT_EQ(Format::isoFractional(at(253402300799)), "9999-12-31T23:59:59.000Z");
}

} // namespace vellumor::formatTest
