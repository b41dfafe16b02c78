#include "ui/model/ResetTooltip.h"

#include "support/ScopedZone.h"
#include "ui/model/Readings.h"

#include <gtest/gtest.h>

namespace vellumor::resetTooltipTest {
namespace {

using test::instant;

struct Row {
    const char* date;
    const char* text;
};

void expectAll(std::string_view now, const std::vector<Row>& rows)
{
    for (const auto& [date, text] : rows)
        EXPECT_EQ(ResetTooltip::instant(instant(date), instant(now)), text) << date;
}

TEST(ResetTooltip, aMomentIsToldByItsDayOnTheUsersCalendar)
{
    const test::ScopedZone zone("UTC");
    expectAll("2026-03-29T12:00:00Z",
              {
                  // a Sunday
                  {"2026-03-29T12:00:00Z", "today at 12:00 PM"},
                  {"2026-03-29T15:05:59Z", "today at 3:05 PM"},
                  {"2026-03-29T23:59:59Z", "today at 11:59 PM"},
                  {"2026-03-30T00:00:00Z", "tomorrow at 12:00 AM"},
                  {"2026-03-30T23:59:59Z", "tomorrow at 11:59 PM"},
                  {"2026-03-31T00:00:00Z", "Tuesday at 12:00 AM"},
                  {"2026-04-01T09:07:00Z", "Wednesday at 9:07 AM"},
                  {"2026-04-02T12:30:00Z", "Thursday at 12:30 PM"},
                  {"2026-04-03T13:00:00Z", "Friday at 1:00 PM"},
                  {"2026-04-04T11:59:59Z", "Saturday at 11:59 AM"},
                  {"2026-04-04T12:00:00Z", "Saturday at 12:00 PM"}, // six days to the second
                  {"2026-04-04T12:00:01Z", "Apr 4 at 12:00 PM"},
                  {"2026-04-05T12:00:00Z", "Apr 5 at 12:00 PM"},
                  {"2027-01-31T01:02:03Z", "Jan 31 at 1:02 AM"},
              });
}

TEST(ResetTooltip, aMomentInThePastIsTodaysOrHasItsDate)
{
    const test::ScopedZone zone("UTC");
    expectAll("2026-03-29T12:00:00Z", {
                                          {"2026-03-29T11:59:59Z", "today at 11:59 AM"},
                                          {"2026-03-29T00:00:00Z", "today at 12:00 AM"},
                                          {"2026-03-28T23:59:59Z", "Mar 28 at 11:59 PM"},
                                          {"2026-03-26T10:00:00Z", "Mar 26 at 10:00 AM"},
                                          {"1970-01-01T00:00:00Z", "Jan 1 at 12:00 AM"},
                                      });
}

TEST(ResetTooltip, theDayIsThatOfTheZone)
{
    const test::ScopedZone zone("Asia/Kolkata"); // 5:30 ahead: it is 11:30 PM
    expectAll("2026-03-29T18:00:00Z", {
                                          {"2026-03-29T18:29:59Z", "today at 11:59 PM"},
                                          {"2026-03-29T18:30:00Z", "tomorrow at 12:00 AM"},
                                          {"2026-03-30T18:29:59Z", "tomorrow at 11:59 PM"},
                                          {"2026-03-30T18:30:00Z", "Tuesday at 12:00 AM"},
                                          {"2026-03-28T18:30:00Z", "today at 12:00 AM"},
                                          {"2026-03-28T18:29:59Z", "Mar 28 at 11:59 PM"},
                                      });
}

TEST(ResetTooltip, aDayOfAnotherLengthIsStillADay)
{
    const test::ScopedZone zone("Europe/Berlin");
    // The clocks go from 2 to 3 on this Sunday, which has 23 hours.
    expectAll("2026-03-28T22:30:00Z", {
                                          // Saturday, 11:30 PM
                                          {"2026-03-28T23:00:00Z", "tomorrow at 12:00 AM"},
                                          {"2026-03-29T00:59:00Z", "tomorrow at 1:59 AM"},
                                          {"2026-03-29T01:00:00Z", "tomorrow at 3:00 AM"},
                                          {"2026-03-29T21:59:59Z", "tomorrow at 11:59 PM"},
                                          {"2026-03-29T22:00:00Z", "Monday at 12:00 AM"},
                                      });
    // They go back from 3 to 2 on this one, which has 25.
    expectAll("2026-10-24T22:00:00Z", {
                                          // Sunday, midnight
                                          {"2026-10-25T00:30:00Z", "today at 2:30 AM"},
                                          {"2026-10-25T01:30:00Z", "today at 2:30 AM"},
                                          {"2026-10-25T22:59:59Z", "today at 11:59 PM"},
                                          {"2026-10-25T23:00:00Z", "tomorrow at 12:00 AM"},
                                      });
}

TEST(ResetTooltip, theYearsEndIsADayLikeAnother)
{
    const test::ScopedZone zone("UTC");
    expectAll("2026-12-31T12:00:00Z",
              {
                  {"2027-01-01T00:00:00Z", "tomorrow at 12:00 AM"},
                  {"2027-01-02T00:00:00Z", "Saturday at 12:00 AM"},
                  {"2027-12-31T12:00:00Z", "Dec 31 at 12:00 PM"}, // not today
              });
}

TEST(ResetTooltip, aReportedResetIsTold)
{
    const test::ScopedZone zone("UTC");
    const Instant at = test::noon + std::chrono::hours(2);
    const Instant guess = test::noon + std::chrono::hours(5);
    for (const char* const kind : {"session", "weekly_all", "unknown"}) {
        EXPECT_EQ(ResetTooltip::text(test::window(kind, 3, at), guess, test::noon),
                  "Resets today at 2:00 PM");
    }
}

TEST(ResetTooltip, aSessionThatHasNotBegunIsExplained)
{
    const std::string text =
        "No session is running. The 5-hour session window starts with your first message.";
    EXPECT_EQ(ResetTooltip::text(test::window("session", 0), std::nullopt, test::noon), text);
    EXPECT_EQ(ResetTooltip::text(test::window("session", 0), test::noon, test::noon), text);
}

TEST(ResetTooltip, anEstimateSaysThatItIsOne)
{
    const test::ScopedZone zone("UTC");
    EXPECT_EQ(ResetTooltip::text(test::window("weekly_all", 0), test::noon + std::chrono::hours(27),
                                 test::noon),
              "Estimated to reset tomorrow at 3:00 PM based on this window's last observed reset.");
}

TEST(ResetTooltip, aLimitOfWhichNothingIsKnownHasNone)
{
    EXPECT_EQ(ResetTooltip::text(test::window("weekly_all", 0), std::nullopt, test::noon),
              std::nullopt);
}

} // namespace
} // namespace vellumor::resetTooltipTest
