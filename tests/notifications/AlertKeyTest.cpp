#include "notifications/AlertKey.h"

#include "notifications/NotificationTesting.h"

#include <gtest/gtest.h>

namespace vellumor::alertKeyTest {
namespace {

using test::yearLast;
using test::yearOne;

Instant micros(long long count)
{
    return Instant(std::chrono::microseconds(count));
}

TEST(AlertKey, isItsPartsAndThePeriodWithBarsBetween)
{
    const Instant period(std::chrono::seconds(1774785600));
    EXPECT_EQ(AlertKey::of({"k3f9qz", "reset", "session"}, period),
              "k3f9qz|reset|session|1774785600");
    EXPECT_EQ(AlertKey::of({"thr-weekly90", "k3f9qz", "seven_day_opus"}, period),
              "thr-weekly90|k3f9qz|seven_day_opus|1774785600");
    EXPECT_EQ(AlertKey::of({}, period), "1774785600");
    EXPECT_EQ(AlertKey::of({"", ""}, period), "||1774785600");
    EXPECT_EQ(AlertKey::of({"a|b", "c\nd"}, period), "a|b|c\nd|1774785600");
}

TEST(AlertKey, wholeSecondsAreCutTowardsZeroOnBothSidesOfIt)
{
    const std::pair<Instant, const char*> rows[] = {
        {micros(0), "a|0"},
        {micros(999'999), "a|0"},
        {micros(1'000'000), "a|1"},
        {micros(1'999'999), "a|1"},
        {micros(-1), "a|0"},
        {micros(-999'999), "a|0"},
        {micros(-1'000'000), "a|-1"},
        {micros(-1'999'999), "a|-1"},
        {micros(1774785600'999'999), "a|1774785600"},
        {yearOne, "a|-62135596800"},
        {yearLast, "a|253402300799"},
    };
    for (const auto& [period, expected] : rows)
        EXPECT_EQ(AlertKey::of({"a"}, period), expected);
}

TEST(AlertKey, isOutlivedMoreThanEightDaysAfterItsPeriod)
{
    const long long eightDays = 691200;
    const long long now = 1774785600;
    struct Row {
        long long period;
        long long microsPastNow;
        bool isOutlived;
    };
    const Row rows[] = {
        {now, 0, false},
        {now + 604800, 0, false},
        {now - eightDays + 1, 0, false},
        {now - eightDays, 0, false},
        {now - eightDays, -1, false},
        {now - eightDays, 1, true},
        {now - eightDays - 1, 0, true},
        {now - eightDays - 1, -1'000'000, false},
        {0, 0, true},
        {-62135596800, 0, true},
        {253402300799, 0, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.period);
        const Instant at = micros(now * 1'000'000 + row.microsPastNow);
        EXPECT_EQ(AlertKey::isOutlived("k|reset|session|" + std::to_string(row.period), at),
                  row.isOutlived);
    }
}

TEST(AlertKey, thatEndsInNoNumberIsNeverOutlived)
{
    for (const char* key : {"", "|", "k3f9qz", "k|reset|session|", "k|reset|session|soon",
                            "k|reset|1|session", "k|1x", "k|x1", "k|1 ", "k| 1", "k|--1", "k|1\n"})
        EXPECT_FALSE(AlertKey::isOutlived(key, yearLast)) << key;
}

TEST(AlertKey, ofPartsWithBarsIsStillJudgedByItsLastPart)
{
    const Instant period(std::chrono::seconds(1774785600));
    for (const char* part : {"a|b", "|", "9|9", "253402300799|253402300799", "x\n|y"}) {
        const std::string key = AlertKey::of({part, "reset", part}, period);
        EXPECT_FALSE(AlertKey::isOutlived(key, period)) << key;
        EXPECT_TRUE(AlertKey::isOutlived(key, period + std::chrono::days(9))) << key;
    }
    EXPECT_TRUE(AlertKey::isOutlived("12", period)) << "a number alone";
}

} // namespace
} // namespace vellumor::alertKeyTest
