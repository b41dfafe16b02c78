#include "cli/LocaleTime.h"

#include "support/FakeClock.h"
#include "support/ScopedZone.h"

#include <gtest/gtest.h>

namespace vellumor::localeTimeTest {
namespace {

std::tm at(int hour, int minute)
{
    std::tm fields{};
    fields.tm_hour = hour;
    fields.tm_min = minute;
    return fields;
}

TEST(LocaleTime, theSecondsAndTheZoneGoWithWhatPartsThem)
{
    struct Row {
        const char* pattern;
        const char* without;
    };
    const Row rows[] = {{"%H:%M:%S", "%H:%M"},          {"%H.%M.%S", "%H.%M"},
                        {"%I:%M:%S %p", "%I:%M %p"},    {"%H:%M", "%H:%M"},
                        {"%p %I:%M:%S", "%p %I:%M"},    {"%k:%M:%S ", "%k:%M"},
                        {"%I:%M:%S %p %Z", "%I:%M %p"}, {"%Z %I:%M:%S %p", "%I:%M %p"}};
    for (const auto& [pattern, without] : rows)
        EXPECT_EQ(LocaleTime::shortened(pattern), without) << pattern;
}

TEST(LocaleTime, hourAndMinuteStandAsThePatternSays)
{
    struct Row {
        const char* pattern;
        int hour;
        const char* text;
    };
    const Row rows[] = {{"%H:%M", 9, "09:05"},       {"%H.%M", 15, "15.05"},
                        {"%k:%M", 9, "9:05"},        {"%I:%M %p", 15, "3:05 PM"},
                        {"%I:%M %p", 0, "12:05 AM"}, {"%l:%M %p", 12, "12:05 PM"},
                        {"%H h %M", 7, "07 h 05"}};
    for (const auto& [pattern, hour, expected] : rows) {
        EXPECT_EQ(LocaleTime::text(pattern, at(hour, 5), hour < 12 ? "AM" : "PM"), expected)
            << pattern;
    }
}

TEST(LocaleTime, aPatternWithMoreInItIsNotForUs)
{
    for (const char* pattern :
         {"", "%", "%H:%M%Z", "%OH:%OM", "%d %H:%M", "%H時%M分%S秒", "%H시 %M분"})
        EXPECT_EQ(LocaleTime::text(pattern, at(9, 5), "AM"), std::nullopt) << pattern;
}

TEST(LocaleTime, withoutALocaleItIsTheTwentyFourHourClock)
{
    const test::ScopedZone zone("Asia/Kolkata");
    EXPECT_EQ(LocaleTime::shortText(test::instant("2026-03-29T09:35:59Z")), "15:05");
}

} // namespace
} // namespace vellumor::localeTimeTest
