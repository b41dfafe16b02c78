#include "base/LocalTime.h"

#include "support/FakeClock.h"
#include "support/ScopedZone.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <numeric>
#include <random>
#include <vector>

namespace vellumor::localTimeTest {
namespace {

using test::instant;
using test::ScopedZone;

TEST(LocalTime, theFieldsAreThoseOfTheZoneThatHoldsNow)
{
    const Instant moment = instant("2026-03-29T20:15:42Z");
    for (const auto& [zone, hour, minute, day] :
         {std::tuple("UTC", 20, 15, 29), std::tuple("Asia/Kolkata", 1, 45, 30),
          std::tuple("America/New_York", 16, 15, 29), std::tuple("Europe/Berlin", 22, 15, 29)}) {
        const ScopedZone scoped(zone);
        const std::tm local = LocalTime::fields(moment);
        EXPECT_EQ(std::tuple(local.tm_hour, local.tm_min, local.tm_mday),
                  std::tuple(hour, minute, day))
            << zone;
        EXPECT_EQ(local.tm_sec, 42);
    }
}

TEST(LocalTime, aFractionBefore1970BelongsToTheSecondBeforeIt)
{
    const ScopedZone utc("UTC");
    const std::tm local = LocalTime::fields(Instant(std::chrono::microseconds(-1)));
    EXPECT_EQ(std::tuple(local.tm_year, local.tm_hour, local.tm_sec), std::tuple(69, 23, 59));
}

TEST(LocalTime, daysAreCountedOnTheCalendar)
{
    const struct {
        const char* zone;
        const char* base;
        const char* moment;
        int days;
    } rows[] = {
        {"UTC", "2026-03-29T00:00:00Z", "2026-03-29T23:59:59.999Z", 0},
        {"UTC", "2026-03-29T23:59:59Z", "2026-03-30T00:00:00Z", 1},
        {"UTC", "2026-03-29T00:00:00Z", "2026-03-28T23:59:59.999Z", -1},
        {"UTC", "2026-02-28T12:00:00Z", "2026-03-01T12:00:00Z", 1},
        {"UTC", "2028-02-28T12:00:00Z", "2028-03-01T12:00:00Z", 2},
        {"UTC", "2026-12-31T12:00:00Z", "2027-01-01T12:00:00Z", 1},
        {"UTC", "2026-03-29T12:00:00Z", "2027-03-29T12:00:00Z", 365},
        {"Asia/Kolkata", "2026-03-29T18:29:59Z", "2026-03-29T18:30:00Z", 1},
        {"Asia/Kolkata", "2026-03-28T18:30:00Z", "2026-03-29T18:29:59Z", 0},
        {"Europe/Berlin", "2026-03-28T23:00:00Z", "2026-03-29T21:59:59Z", 0}, // of 23 hours
        {"Europe/Berlin", "2026-03-28T23:00:00Z", "2026-03-29T22:00:00Z", 1},
        {"Europe/Berlin", "2026-10-24T22:00:00Z", "2026-10-25T22:59:59Z", 0}, // of 25 hours
        {"Europe/Berlin", "2026-10-24T22:00:00Z", "2026-10-25T23:00:00Z", 1},
    };
    for (const auto& [zone, base, moment, days] : rows) {
        SCOPED_TRACE(std::string(zone) + " " + moment);
        const ScopedZone scoped(zone);
        EXPECT_TRUE(LocalTime::isDaysAfter(instant(moment), days, instant(base)));
        EXPECT_FALSE(LocalTime::isDaysAfter(instant(moment), days + 1, instant(base)));
        EXPECT_FALSE(LocalTime::isDaysAfter(instant(moment), days - 1, instant(base)));
        EXPECT_EQ(LocalTime::isSameDay(instant(moment), instant(base)), days == 0);
    }
}

TEST(LocalTime, aDayBeginsAtItsFirstMoment)
{
    const struct {
        const char* zone;
        const char* moment;
        int days;
        const char* start;
    } rows[] = {
        {"UTC", "2026-03-29T00:00:00Z", 0, "2026-03-29T00:00:00Z"},
        {"UTC", "2026-03-29T23:59:59.999Z", 0, "2026-03-29T00:00:00Z"},
        {"UTC", "2026-03-29T12:00:00Z", 1, "2026-03-30T00:00:00Z"},
        {"UTC", "2026-03-29T12:00:00Z", -1, "2026-03-28T00:00:00Z"},
        {"UTC", "2026-02-28T12:00:00Z", 1, "2026-03-01T00:00:00Z"},
        {"UTC", "2028-02-28T12:00:00Z", 1, "2028-02-29T00:00:00Z"},
        {"UTC", "2026-12-31T12:00:00Z", 365, "2027-12-31T00:00:00Z"},
        {"UTC", "1969-12-31T23:59:59Z", 0, "1969-12-31T00:00:00Z"},
        {"UTC", "1970-01-01T00:00:00Z", 0, "1970-01-01T00:00:00Z"},
        {"Etc/GMT-1", "1970-01-01T12:00:00Z", 0, "1969-12-31T23:00:00Z"},
        {"Asia/Kolkata", "2026-03-29T18:29:59Z", 0, "2026-03-28T18:30:00Z"},
        {"Asia/Kolkata", "2026-03-29T18:30:00Z", 0, "2026-03-29T18:30:00Z"},
        {"Asia/Kolkata", "2026-03-29T18:30:00Z", 2, "2026-03-31T18:30:00Z"},
        // Of 23 and of 25 hours.
        {"Europe/Berlin", "2026-03-28T12:00:00Z", 1, "2026-03-28T23:00:00Z"},
        {"Europe/Berlin", "2026-03-28T12:00:00Z", 2, "2026-03-29T22:00:00Z"},
        {"Europe/Berlin", "2026-03-29T21:59:59Z", 0, "2026-03-28T23:00:00Z"},
        {"Europe/Berlin", "2026-03-29T21:59:59Z", 1, "2026-03-29T22:00:00Z"},
        {"Europe/Berlin", "2026-10-25T22:59:59Z", 0, "2026-10-24T22:00:00Z"},
        {"Europe/Berlin", "2026-10-25T22:59:59Z", 1, "2026-10-25T23:00:00Z"},
        // Half an hour less.
        {"Australia/Lord_Howe", "2026-04-04T13:00:00Z", 0, "2026-04-04T13:00:00Z"},
        {"Australia/Lord_Howe", "2026-04-04T13:00:00Z", 1, "2026-04-05T13:30:00Z"},
        // Where midnight is left out, and where it comes twice.
        {"Africa/Cairo", "2026-04-24T12:00:00Z", 0, "2026-04-23T22:00:00Z"},
        {"Africa/Cairo", "2026-04-23T12:00:00Z", 1, "2026-04-23T22:00:00Z"},
        {"America/Havana", "2026-11-01T12:00:00Z", 0, "2026-11-01T04:00:00Z"},
        {"America/Havana", "2026-10-31T12:00:00Z", 1, "2026-11-01T04:00:00Z"},
        {"America/Havana", "2026-11-01T05:30:00Z", 0, "2026-11-01T04:00:00Z"},
    };
    for (const auto& [zone, moment, days, start] : rows) {
        SCOPED_TRACE(std::string(zone) + " " + moment);
        const ScopedZone scoped(zone);
        EXPECT_EQ(LocalTime::startOfDay(instant(moment), days), instant(start));
    }
}

// In any order, since the C library may remember what it was asked before.
TEST(LocalTime, noMomentOfAYearLiesBeforeItsDayOrBehindIt)
{
    std::vector<int> hours(static_cast<std::size_t>(24 * 366));
    std::iota(hours.begin(), hours.end(), 0);
    std::shuffle(hours.begin(), hours.end(), std::mt19937_64(20260329));
    for (const char* zone :
         {"UTC", "Asia/Kolkata", "Europe/Berlin", "America/New_York", "Australia/Lord_Howe",
          "Africa/Cairo", "Asia/Beirut", "America/Santiago", "America/Havana", "Atlantic/Azores"}) {
        SCOPED_TRACE(zone);
        const ScopedZone scoped(zone);
        for (const int hour : hours) {
            const Instant moment = instant("2026-01-01T00:17:00Z") + std::chrono::hours(hour);
            const auto start = LocalTime::startOfDay(moment, 0);
            const auto next = LocalTime::startOfDay(moment, 1);
            ASSERT_TRUE(start && next);
            ASSERT_TRUE(*start <= moment && moment < *next) << hour;
            ASSERT_TRUE(LocalTime::isSameDay(*start, moment)) << hour;
            ASSERT_FALSE(LocalTime::isSameDay(*start - std::chrono::seconds(1), moment)) << hour;
            ASSERT_TRUE(LocalTime::isDaysAfter(*next, 1, moment)) << hour;
        }
    }
}

TEST(LocalTime, beyondTheCalendarNoDayBegins)
{
    const ScopedZone utc("UTC");
    EXPECT_TRUE(LocalTime::startOfDay(instant("9999-12-31T12:00:00Z"), 1));
    EXPECT_EQ(LocalTime::startOfDay(instant("2026-03-29T12:00:00Z"),
                                    std::numeric_limits<int>::max() - 31),
              std::nullopt);
}

TEST(LocalTime, weekdaysAndMonthsAreEnglish)
{
    const ScopedZone utc("UTC");
    const char* const weekdays[] = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                    "Thursday", "Friday", "Saturday"};
    for (int i = 0; i < 7; ++i)
        EXPECT_EQ(LocalTime::weekday(instant("2026-03-29T12:00:00Z") + std::chrono::days(i)),
                  weekdays[i]);
    const char* const months[] = {"Jan 1", "Feb 1", "Mar 1", "Apr 1", "May 1", "Jun 1",
                                  "Jul 1", "Aug 1", "Sep 1", "Oct 1", "Nov 1", "Dec 1"};
    for (unsigned i = 0; i < 12; ++i) {
        const std::chrono::sys_days first(std::chrono::year(2026) / std::chrono::month(i + 1) / 1);
        EXPECT_EQ(LocalTime::monthAndDay(first), months[i]);
    }
    EXPECT_EQ(LocalTime::monthAndDay(instant("2026-11-28T12:00:00Z")), "Nov 28");
}

TEST(LocalTime, theHoursGoFromTwelveToEleven)
{
    const ScopedZone utc("UTC");
    const std::pair<const char*, const char*> rows[] = {
        {"2026-03-29T00:00:00Z", "12:00 AM"}, {"2026-03-29T00:59:59Z", "12:59 AM"},
        {"2026-03-29T01:05:00Z", "1:05 AM"},  {"2026-03-29T11:59:00Z", "11:59 AM"},
        {"2026-03-29T12:00:00Z", "12:00 PM"}, {"2026-03-29T13:00:00Z", "1:00 PM"},
        {"2026-03-29T23:59:00Z", "11:59 PM"},
    };
    for (const auto& [moment, text] : rows)
        EXPECT_EQ(LocalTime::twelveHourTime(instant(moment)), text);
}

} // namespace
} // namespace vellumor::localTimeTest
