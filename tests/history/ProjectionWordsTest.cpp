#include "history/Projection.h"
#include "support/FakeClock.h"

#include <gtest/gtest.h>

namespace vellumor::projectionWordsTest {
namespace {

using test::instant;

// The tests' zone is half an hour off the full ones: five and a half hours ahead of UTC.
const Instant now = instant("2026-03-04T12:00:00Z"); // a Wednesday, 17:30

std::string shortTime(Instant moment)
{
    return moment == instant("2026-03-04T18:29:59Z") ? "11:59 PM" : "12:00 AM";
}

std::string phraseOf(Projection::Form form)
{
    return Projection{"Session", "session", form}.phrase(now, shortTime);
}

TEST(ProjectionWords, aPaceTellsWhereItEnds)
{
    EXPECT_EQ(phraseOf(Projection::OnPace{40}), "on pace for ~40% by reset");
}

TEST(ProjectionWords, aMomentOfTheSameLocalDayHasNoWeekday)
{
    EXPECT_EQ(phraseOf(Projection::Eta{instant("2026-03-04T18:29:59Z")}),
              "on pace to hit the limit ~11:59 PM");
}

TEST(ProjectionWords, aMomentOfAnotherDayHasItsWeekdayInEnglish)
{
    EXPECT_EQ(phraseOf(Projection::Eta{instant("2026-03-04T18:30:00Z")}),
              "on pace to hit the limit ~Thursday 12:00 AM");
    EXPECT_EQ(phraseOf(Projection::Eta{instant("2026-03-07T18:30:00Z")}),
              "on pace to hit the limit ~Sunday 12:00 AM");
    EXPECT_EQ(phraseOf(Projection::Eta{instant("2027-03-04T12:00:00Z")}),
              "on pace to hit the limit ~Thursday 12:00 AM");
}

TEST(ProjectionWords, theSummaryNamesTheWindow)
{
    EXPECT_EQ((Projection{"Weekly", "weekly_all", Projection::OnPace{95}}.summary(now)),
              "Weekly ~95% by reset");
    EXPECT_EQ(
        (Projection{"Session", "session", Projection::Eta{now + std::chrono::minutes(185)}}.summary(
            now)),
        "Session limit in 3h 5m");
}

} // namespace
} // namespace vellumor::projectionWordsTest
