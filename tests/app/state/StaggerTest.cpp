#include "app/state/Stagger.h"

#include "support/FakeClock.h"

#include <gtest/gtest.h>

namespace vellumor::staggerTest {
namespace {

const Instant now = test::instant("2026-03-29T12:00:00Z");

TEST(Stagger, theTurnIsThatOfTheOneThatHasWaitedLongest)
{
    using std::chrono::seconds;
    EXPECT_EQ(Stagger::nextTarget({}, {}), std::nullopt);
    EXPECT_EQ(Stagger::nextTarget({"a"}, {{"a", now}}), "a");
    EXPECT_EQ(Stagger::nextTarget({"a", "b", "c"}, {}), "a");
    EXPECT_EQ(Stagger::nextTarget({"a", "b", "c"}, {{"a", now}}), "b");
    EXPECT_EQ(Stagger::nextTarget({"a", "b"}, {{"a", now}, {"b", now - seconds(1)}}), "b");
    EXPECT_EQ(Stagger::nextTarget({"a", "b", "c"}, {{"a", now}, {"b", now}, {"c", now}}), "a");
    EXPECT_EQ(Stagger::nextTarget({"a"}, {{"gone", now - seconds(9)}}), "a");
}

TEST(Stagger, theCadenceIsMentionedOnlyWhereItIsSlowerThanChosen)
{
    EXPECT_EQ(Stagger::cadenceNote(60, 60), std::nullopt);
    EXPECT_EQ(Stagger::cadenceNote(60, 120), std::nullopt);
    EXPECT_EQ(Stagger::cadenceNote(120, 60), "refreshing every ~2 min");
    EXPECT_EQ(Stagger::cadenceNote(180, 120), "refreshing every ~3 min");
}

TEST(Stagger, eachAccountThatIsPolledTakesAMinute)
{
    EXPECT_EQ(Stagger::effectiveInterval(120, 0), 120);
    EXPECT_EQ(Stagger::effectiveInterval(30, 0), 60);
    EXPECT_EQ(Stagger::effectiveInterval(60, 3), 180);
    EXPECT_EQ(Stagger::effectiveInterval(1800, 3), 1800);
}

} // namespace
} // namespace vellumor::staggerTest
