#include "history/ResetAnchor.h"

#include "support/FakeClock.h"

#include <gtest/gtest.h>

namespace vellumor::resetAnchorTest {

using test::instant;

namespace {

using namespace std::chrono_literals;

constexpr std::chrono::seconds week(604800);

const Instant reset = instant("2026-03-01T09:30:00.125Z");
const ResetAnchor anchor{reset, false};

LimitWindow window(const char* kind, const char* group)
{
    LimitWindow idle;
    idle.kind = kind;
    idle.group = group;
    return idle;
}

} // namespace

TEST(ResetAnchor, theNextResetIsTheFirstPointOfTheCadenceStrictlyAfterNow)
{
    struct Row {
        std::chrono::microseconds sinceAnchor;
        int periods;
    };
    const Row rows[] = {
        {0s, 1},           {1us, 1},        {1s, 1},           {week - 1us, 1},
        {week, 2},         {week + 1us, 2}, {2 * week, 3},     {2 * week - 1us, 2},
        {-1us, 0},         {-1s, 0},        {-week + 1us, 0},  {-week, 0},
        {-week - 1us, -1}, {-2 * week, -1}, {520 * week, 521}, {520 * week - 1ms, 520},
    };
    for (const auto& [sinceAnchor, periods] : rows) {
        SCOPED_TRACE(sinceAnchor.count());
        EXPECT_EQ(nextReset(anchor, "weekly_all", "weekly", reset + sinceAnchor),
                  reset + periods * week);
    }
}

TEST(ResetAnchor, anAnchorOffTheCadenceTellsNothing)
{
    EXPECT_EQ(nextReset({reset, true}, "weekly_all", "weekly", reset), std::nullopt);
    EXPECT_EQ(
        estimatedReset(window("weekly_all", "weekly"), {{"weekly_all", {reset, true}}}, reset),
        std::nullopt);
}

TEST(ResetAnchor, onlyTheWeeklyFamilyHasACadence)
{
    struct Row {
        const char* kind;
        const char* group;
        bool isEstimated;
    };
    const Row rows[] = {
        {"weekly_all", "weekly", true},
        {"weekly_all", "", true},
        {"weekly_scoped", "weekly", true},
        {"seven_day_opus", "", true},
        {"seven_day_opus", "other", true},
        {"unknown", "weekly", true},
        {"session", "session", false},
        {"session", "weekly", false},
        {"weekly_all", "session", false},
        {"seven_day_opus", "session", false},
        {"weekly_scoped", "", false},
        {"monthly", "monthly", false},
        {"", "", false},
    };
    for (const auto& [kind, group, isEstimated] : rows) {
        SCOPED_TRACE(std::string(kind) + " in " + group);
        const auto expected = isEstimated ? std::optional(reset + week) : std::nullopt;
        EXPECT_EQ(nextReset(anchor, kind, group, reset), expected);
        EXPECT_EQ(estimatedReset(window(kind, group), {{kind, anchor}}, reset), expected);
    }
}

TEST(ResetAnchor, aWindowThatReportsItsResetIsNotEstimated)
{
    LimitWindow reporting = window("weekly_all", "weekly");
    const AnchorsByKind anchors = {{"weekly_all", anchor}};
    EXPECT_EQ(estimatedReset(reporting, anchors, reset), reset + week);
    reporting.resetsAt = reset - 1h;
    EXPECT_EQ(estimatedReset(reporting, anchors, reset), std::nullopt);
}

TEST(ResetAnchor, aWindowIsEstimatedFromTheAnchorOfItsOwnKind)
{
    const LimitWindow idle = window("weekly_all", "weekly");
    EXPECT_EQ(estimatedReset(idle, {}, reset), std::nullopt);
    EXPECT_EQ(estimatedReset(idle, {{"seven_day_opus", anchor}, {"weekly", anchor}}, reset),
              std::nullopt);
    EXPECT_EQ(estimatedReset(
                  idle, {{"seven_day_opus", anchor}, {"weekly_all", {reset + 1h, false}}}, reset),
              reset + 1h);
}

TEST(ResetAnchor, theEndsOfTimeAreEstimatedWithoutOverflow)
{
    const Instant first = instant("0001-01-01T00:00:00Z");
    const Instant last = instant("9999-12-31T23:59:59Z");
    const auto late = nextReset({first, false}, "weekly_all", "weekly", last);
    ASSERT_TRUE(late);
    EXPECT_GT(*late, last);
    EXPECT_LE(*late, last + week);
    const auto early = nextReset({last, false}, "weekly_all", "weekly", first);
    ASSERT_TRUE(early);
    EXPECT_GT(*early, first);
    EXPECT_LE(*early, first + week);
}

} // namespace vellumor::resetAnchorTest
