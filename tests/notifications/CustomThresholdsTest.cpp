#include "notifications/CustomThresholds.h"

#include "notifications/NotificationTesting.h"

#include <gtest/gtest.h>

#include <limits>

namespace vellumor::customThresholdsTest {
namespace {

using namespace test;
using CustomThresholds::CustomFire;

const std::string id = "k3f9qz";
const Instant later = after(3600); // 1772447400
const std::string sessionKey = "k3f9qz|thr-custom|session|1772447400";
const std::string weeklyKey = "k3f9qz|thr-custom|weekly_all|1772447400";

Preferences fixedLevelsOff()
{
    Preferences preferences;
    preferences.notifySession50 = preferences.notifySession90 = false;
    preferences.notifyWeekly50 = preferences.notifyWeekly90 = false;
    return preferences;
}

std::vector<std::string> kinds(const Usage& usage, const Usage& before, double threshold,
                               const Preferences& preferences = fixedLevelsOff(),
                               const std::set<std::string>& alreadyFired = {},
                               const std::set<std::string>& limitReached = {})
{
    std::vector<std::string> found;
    for (const CustomFire& fire : CustomThresholds::customFired(
             id, steps(usage, before), threshold, preferences, alreadyFired, limitReached))
        found.push_back(fire.windowKind);
    return found;
}

using Kinds = std::vector<std::string>;

TEST(CustomThresholds, aLevelIsCrossedWhenItLayAboveAndDoesNotAnyMore)
{
    struct Row {
        double threshold;
        double before;
        double now;
        bool isCrossed;
    };
    const Row rows[] = {
        {72.5, 10, 72.4999, false}, {72.5, 72.4999, 72.5, true},
        {72.5, 72.5, 72.5, false},  {72.5, 72.5, 80, false},
        {72.5, 0, 100, true},       {72.5, 80, 70, false},
        {1, 0, 0.99, false},        {1, 0, 1, true},
        {99, 98, 98.9, false},      {99, 98.9, 99, true},
        {99, 98, 10'001, true},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(std::to_string(row.before) + " to " + std::to_string(row.now));
        const Kinds expected = row.isCrossed ? Kinds{"session", "weekly_all"} : Kinds{};
        EXPECT_EQ(kinds(reading({session(row.now, later), weekly(row.now, later)}),
                        reading({session(row.before, later), weekly(row.before, later)}),
                        row.threshold),
                  expected);
    }
}

TEST(CustomThresholds, whatFiresTellsItsWindow)
{
    const auto crossed = steps(reading({scoped("Opus", 81.5, later)}), {});
    EXPECT_EQ(CustomThresholds::customFired(id, crossed, 75, fixedLevelsOff(), {}, {}),
              (std::vector<CustomFire>{{"weekly_scoped", "Weekly (Opus)", 75, 81.5,
                                        "k3f9qz|thr-custom|weekly_scoped|1772447400"}}));
}

TEST(CustomThresholds, twoWindowsOfOneKindCrossEachByItself)
{
    const Usage before = reading({scoped("Opus", 70, later), scoped("Sonnet", 70, later)});
    const Usage now = reading({scoped("Sonnet", 100, later), scoped("Opus", 80, later)});
    const auto found =
        CustomThresholds::customFired(id, steps(now, before), 75, fixedLevelsOff(), {}, {});
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[0].windowTitle, "Weekly (Sonnet)");
    EXPECT_EQ(found[0].key, "k3f9qz|thr-custom|weekly_scoped/Sonnet|1772447400");
    EXPECT_EQ(found[1].windowTitle, "Weekly (Opus)");
    EXPECT_EQ(found[1].key, "k3f9qz|thr-custom|weekly_scoped/Opus|1772447400");
    EXPECT_EQ(kinds(now, before, 75, fixedLevelsOff(), {}, {"weekly_scoped/Sonnet"}),
              Kinds{"weekly_scoped/Opus"})
        << "the limit of the one was told";
    EXPECT_EQ(kinds(now, before, 75, fixedLevelsOff(), {found[0].key}), Kinds{"weekly_scoped/Opus"})
        << "and so was this level of it";
}

TEST(CustomThresholds, aWindowWithoutAResetTimeCrossesNothing)
{
    EXPECT_EQ(kinds(reading({session(90, {}), weekly(90, later)}), reading({}), 75),
              Kinds{"weekly_all"});
}

TEST(CustomThresholds, ofAnotherPeriodTheReadingBeforeCountsAsZero)
{
    const std::pair<int, bool> rows[] = {{-301, true}, {-300, false}, {300, false}, {301, true}};
    for (const auto& [offset, isCrossed] : rows) {
        EXPECT_EQ(kinds(reading({session(80, later)}),
                        reading({session(80, later + seconds(offset))}), 75),
                  isCrossed ? Kinds{"session"} : Kinds{})
            << offset;
    }
}

TEST(CustomThresholds, aWindowOfWhichTheLimitWasToldIsPassedOver)
{
    const Usage now = reading({session(100, later), weekly(100, later), opus(100, later)});
    EXPECT_EQ(kinds(now, reading({}), 75, fixedLevelsOff(), {}, {"session", "seven_day_opus"}),
              Kinds{"weekly_all"});
}

TEST(CustomThresholds, whatAFixedLevelOfTheFamilySaysIsNotSaidAgain)
{
    struct Row {
        double threshold;
        bool Preferences::*isOn;
        Kinds crossed;
    };
    const Kinds both = {"session", "unknown"};
    const Kinds noSession = {"unknown"};
    const Kinds sessionAlone = {"session"};
    const Row rows[] = {
        {50, &Preferences::notifySession50, noSession},
        {90, &Preferences::notifySession90, noSession},
        {50, &Preferences::notifyWeekly50, sessionAlone},
        {90, &Preferences::notifyWeekly90, sessionAlone},
        {50, &Preferences::notifySession90, both},
        {90, &Preferences::notifySession50, both},
        {50, &Preferences::notifyWeekly90, both},
        {90, &Preferences::notifyWeekly50, both},
        {50.001, &Preferences::notifySession50, both},
        {49.999, &Preferences::notifyWeekly50, both},
        {89.999, &Preferences::notifySession90, both},
        {90, &Preferences::notifySessionLimit, both},
    };
    // The group does not make a session of a window.
    const Usage now = reading({session(95, later), window("unknown", "session", 95, later)});
    for (const Row& row : rows) {
        SCOPED_TRACE(row.threshold);
        Preferences preferences = fixedLevelsOff();
        EXPECT_EQ(kinds(now, reading({}), row.threshold, preferences), both);
        preferences.*row.isOn = true;
        EXPECT_EQ(kinds(now, reading({}), row.threshold, preferences), row.crossed);
    }
}

TEST(CustomThresholds, theKeyHoldsNoThresholdSoThatAnotherNumberDoesNotFireAgain)
{
    const Usage now = reading({session(80, later), weekly(80, later)});
    for (const double threshold : {60.0, 70.0, 72.5})
        EXPECT_EQ(kinds(now, reading({}), threshold, fixedLevelsOff(), {sessionKey}),
                  Kinds{"weekly_all"});
    EXPECT_EQ(kinds(now, reading({}), 60, fixedLevelsOff(), {sessionKey, weeklyKey}), Kinds{});
}

TEST(CustomThresholds, theWordsHaveTheNumberAsShortAsItCanBe)
{
    struct Row {
        double threshold;
        double value;
        const char* expected;
    };
    const Row rows[] = {
        {72.5, 80, "Work · Weekly usage crossed 72.5% (now 80%)"},
        {72, 72, "Work · Weekly usage crossed 72% (now 72%)"},
        {1, 1.4, "Work · Weekly usage crossed 1% (now 1%)"},
        {99, 99.5, "Work · Weekly usage crossed 99% (now 100%)"},
        {33.333333333, 40.5, "Work · Weekly usage crossed 33.3333% (now 41%)"},
        {66.6666666, 70, "Work · Weekly usage crossed 66.6667% (now 70%)"},
        {98.9999999, 99, "Work · Weekly usage crossed 99% (now 99%)"},
        {10, 10'001, "Work · Weekly usage crossed 10% (now 10001%)"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(
            CustomThresholds::body({"weekly_all", "Weekly", row.threshold, row.value, ""}, "Work"),
            row.expected);
    }
}

TEST(CustomThresholds, numbersAndNamesThatMakeNoSenseHaveDefinedResults)
{
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const std::pair<double, bool> rows[] = {{nan, false},  {-infinity, false}, {-1e300, false},
                                            {1e300, true}, {infinity, true},   {10'000.5, true}};
    for (const auto& [percent, isCrossed] : rows) {
        EXPECT_EQ(kinds(reading({weekly(percent, yearLast)}), reading({}), 75),
                  isCrossed ? Kinds{"weekly_all"} : Kinds{})
            << percent;
    }
    EXPECT_EQ(kinds(reading({weekly(80, later)}), reading({weekly(nan, later)}), 75), Kinds{});
    EXPECT_EQ(kinds(reading({weekly(80, later)}), reading({}), nan), Kinds{});

    const auto found = CustomThresholds::customFired(
        "a|b", steps(reading({window("x|<b>\n", "", 80, yearOne)}), {}), 75, fixedLevelsOff(), {},
        {});
    ASSERT_EQ(found.size(), 1);
    EXPECT_EQ(found[0].key, "a|b|thr-custom|x|<b>\n|-62135596800");
    EXPECT_EQ(CustomThresholds::body(found[0], "{} & <i>"),
              "{} & <i> · X|<b>\n usage crossed 75% (now 80%)");
}

} // namespace
} // namespace vellumor::customThresholdsTest
