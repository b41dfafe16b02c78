#include "notifications/SessionClosing.h"

#include "notifications/NotificationTesting.h"

#include <gtest/gtest.h>

#include <limits>

namespace vellumor::sessionClosingTest {
namespace {

using namespace test;
using SessionClosing::ClosingFire;

const Instant end = after(7200); // 1772451000
const std::string key = "k3f9qz|closing|session|1772451000";

Instant before(double secondsLeft)
{
    return after(7200 - secondsLeft);
}

// Whether the second of two readings, so many seconds before the end, tells of it.
bool isTold(double leftBefore, double leftNow, int lead = 30, double percent = 40)
{
    const Usage previous = reading({session(percent, end)}, before(leftBefore));
    const Usage now = reading({session(percent, end)}, before(leftNow));
    return SessionClosing::fired("k3f9qz", now, &previous, lead, {}).has_value();
}

TEST(SessionClosing, isToldByTheFirstReadingWithinTheLead)
{
    struct Row {
        double leftBefore;
        double leftNow;
        bool isTold;
    };
    const Row rows[] = {
        {1980, 1740, true},         // 33 minutes before, 29 now
        {1740, 1500, false},        // both within
        {2400, 1980, false},        // both outside
        {1801, 1800.000001, false}, // not yet
        {1801, 1800, true},         {1800.000001, 1799, true}, {1800, 1799, false},
        {1799, 1798, false},        {9000, 0.000001, true},    {9000, 0, false},
        {9000, -1, false},          {9000, -86400, false},
    };
    for (const Row& row : rows)
        EXPECT_EQ(isTold(row.leftBefore, row.leftNow), row.isTold)
            << row.leftBefore << " to " << row.leftNow;
}

TEST(SessionClosing, theLeadCountsAsFiveToAHundredAndTwentyMinutes)
{
    const std::pair<int, int> rows[] = {
        {3, 5},     {5, 5},     {6, 6},     {-2147483647 - 1, 5}, {0, 5},
        {119, 119}, {120, 120}, {121, 120}, {500, 120},           {2147483647, 120},
    };
    for (const auto& [lead, counts] : rows) {
        SCOPED_TRACE(lead);
        EXPECT_TRUE(isTold(counts * 60 + 1, counts * 60, lead));
        EXPECT_FALSE(isTold(counts * 60 + 2, counts * 60 + 1, lead));
        EXPECT_FALSE(isTold(counts * 60, counts * 60 - 1, lead));
    }
}

TEST(SessionClosing, aSessionThatIsUnusedOrNearlyUsedUpIsNotWorthAWord)
{
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    const std::pair<double, bool> rows[] = {
        {-1e300, false},
        {-1, false},
        {0, false},
        {5e-324, true},
        {0.4, true},
        {89.9, true},
        {89.999, true},
        {90, false},
        {95, false},
        {100, false},
        {1e300, false},
        {nan, false},
        {std::numeric_limits<double>::infinity(), false},
    };
    for (const auto& [percent, told] : rows)
        EXPECT_EQ(isTold(1980, 1740, 30, percent), told) << percent;
}

TEST(SessionClosing, whatThePercentWasBeforeDoesNotCount)
{
    const Usage now = reading({session(40, end)}, before(1740));
    for (const double percent : {0.0, 40.0, 100.0}) {
        const Usage previous = reading({session(percent, end)}, before(1980));
        EXPECT_TRUE(SessionClosing::fired("k3f9qz", now, &previous, 30, {}));
    }
}

TEST(SessionClosing, bothReadingsMustHaveTheSessionWithItsResetTime)
{
    const auto told = [](const Usage& now, const Usage* previous) {
        return SessionClosing::fired("k3f9qz", now, previous, 30, {}).has_value();
    };
    const Usage now = reading({weekly(40, end), session(40, end)}, before(1740));
    const Usage previous = reading({session(40, end)}, before(1980));
    EXPECT_TRUE(told(now, &previous));
    EXPECT_FALSE(told(now, nullptr)) << "a start within the lead";
    for (const auto& windows : {std::vector<LimitWindow>{},
                                {weekly(40, end)},
                                {session(40, {})},
                                {window("burst", "session", 40, end)}}) {
        const Usage without = reading(windows, before(1980));
        EXPECT_FALSE(told(now, &without));
        EXPECT_FALSE(told(reading(windows, before(1740)), &previous));
    }
}

TEST(SessionClosing, theReadingBeforeMustBeOfTheSameSession)
{
    const std::pair<double, bool> rows[] = {{-18000, false},    {-301, false}, {-300.000001, false},
                                            {-300, true},       {200, true},   {300, true},
                                            {300.000001, false}};
    const Usage now = reading({session(40, end)}, before(1740));
    for (const auto& [offset, told] : rows) {
        const Usage previous = reading({session(40, after(7200 + offset))}, before(1980));
        EXPECT_EQ(SessionClosing::fired("k3f9qz", now, &previous, 30, {}).has_value(), told)
            << offset;
    }
}

TEST(SessionClosing, theReadingBeforeIsMeasuredAgainstThePresentResetTime)
{
    const Usage now = reading({session(40, end)}, before(1740));
    const Usage previous = reading({session(40, after(7200 - 200))}, before(1900));
    EXPECT_TRUE(SessionClosing::fired("k3f9qz", now, &previous, 30, {}))
        << "1700 seconds before its own, 1900 before this one";
}

TEST(SessionClosing, isToldOnceForASession)
{
    const Usage previous = reading({session(40, end)}, before(1980));
    const Usage now = reading({session(40.25, end)}, before(1740));
    EXPECT_EQ(SessionClosing::fired("k3f9qz", now, &previous, 30, {}),
              (ClosingFire{end, 40.25, key}));
    EXPECT_FALSE(SessionClosing::fired("k3f9qz", now, &previous, 30, {key}));
    EXPECT_TRUE(SessionClosing::fired("other1", now, &previous, 30, {key}));
}

TEST(SessionClosing, theWordsTellTheTimeAndWhatIsLeft)
{
    const std::pair<double, const char*> rows[] = {
        {60, "40% left"},   {40.5, "60% left"}, {40.4, "60% left"},
        {39.5, "61% left"}, {0.4, "100% left"}, {89.9, "10% left"},
        {89.5, "11% left"}, {89.4, "11% left"}, {5e-324, "100% left"}};
    for (const auto& [percent, left] : rows) {
        EXPECT_EQ(SessionClosing::body({end, percent, key}, "Work", hourAndMinute),
                  std::string("Work · session window closes at 11:30 — ") + left)
            << percent;
    }
    const auto narrow = [](Instant) { return std::string("4:30\u202fPM"); };
    EXPECT_EQ(SessionClosing::body({end, 60, key}, "<b>\n|", narrow),
              "<b>\n| · session window closes at 4:30\u202fPM — 40% left");
}

TEST(SessionClosing, resetTimesAtTheEndsOfTheCalendarAreFarFromClosing)
{
    for (const Instant resetsAt : {yearOne, yearLast}) {
        for (const Instant at : {yearOne, morning, yearLast}) {
            const Usage now = reading({session(40, resetsAt)}, at);
            for (const Instant earlier : {yearOne, yearLast}) {
                const Usage previous = reading({session(40, resetsAt)}, earlier);
                EXPECT_FALSE(SessionClosing::fired("k", now, &previous, 120, {}));
            }
        }
    }
    const Usage last = reading({session(40, yearLast)}, yearLast - minutes(2));
    const Usage first = reading({session(40, yearLast)}, yearOne);
    const auto fire = SessionClosing::fired("a|b", last, &first, 5, {});
    ASSERT_TRUE(fire);
    EXPECT_EQ(fire->key, "a|b|closing|session|253402300799");
}

} // namespace
} // namespace vellumor::sessionClosingTest
