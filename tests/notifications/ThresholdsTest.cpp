#include "notifications/Thresholds.h"

#include "notifications/NotificationTesting.h"

#include <gtest/gtest.h>

#include <limits>

namespace vellumor::thresholdsTest {
namespace {

using namespace test;
using Thresholds::Fire;

const std::string id = "k3f9qz";
const Instant later = after(3600); // the reset of each window; 1772447400
constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

struct Row {
    Threshold threshold;
    const char* name;
    double level;
    bool Preferences::*isOn;
};
constexpr Row rows[] = {
    {Threshold::session50, "session50", 50, &Preferences::notifySession50},
    {Threshold::session90, "session90", 90, &Preferences::notifySession90},
    {Threshold::weekly50, "weekly50", 50, &Preferences::notifyWeekly50},
    {Threshold::weekly90, "weekly90", 90, &Preferences::notifyWeekly90},
    {Threshold::sessionLimit, "sessionLimit", 100, &Preferences::notifySessionLimit},
    {Threshold::weeklyLimit, "weeklyLimit", 100, &Preferences::notifyWeeklyLimit},
};

Preferences allOff()
{
    Preferences preferences;
    for (const Row& row : rows)
        preferences.*row.isOn = false;
    return preferences;
}

Preferences allOn()
{
    Preferences preferences;
    for (const Row& row : rows)
        preferences.*row.isOn = true;
    return preferences;
}

std::vector<Fire> fires(const Usage& usage, const Usage& before,
                        const Preferences& preferences = allOn(),
                        const std::set<std::string>& alreadyFired = {})
{
    return Thresholds::newlyFired(id, steps(usage, before), preferences, alreadyFired);
}

std::vector<std::string> keys(const std::vector<Fire>& all)
{
    std::vector<std::string> found;
    for (const Fire& fire : all)
        found.push_back(fire.key);
    return found;
}

using Keys = std::vector<std::string>;

TEST(Thresholds, eachHasItsNameItsLevelAndItsSwitch)
{
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(name(row.threshold), row.name);
        EXPECT_EQ(level(row.threshold), row.level);
        Preferences one = allOff();
        one.*row.isOn = true;
        Preferences allButOne = allOn();
        allButOne.*row.isOn = false;
        for (const Row& other : rows) {
            EXPECT_EQ(isOn(other.threshold, one), other.threshold == row.threshold);
            EXPECT_EQ(isOn(other.threshold, allButOne), other.threshold != row.threshold);
        }
    }
}

TEST(Thresholds, aLevelIsCrossedWhenItLayAboveAndDoesNotAnyMore)
{
    struct Step {
        double offsetBefore;
        double offsetNow;
        bool isCrossed;
    };
    const Step steps[] = {
        {-50, -0.1, false}, {-0.1, -0.001, false}, {-0.1, 0, true}, {-0.001, 0.001, true},
        {-50, 900, true},   {0, 0, false},         {0, 1, false},   {0.001, 30, false},
        {1, -1, false},     {1, 0, false},
    };
    for (const Row& row : rows) {
        for (const Step& step : steps) {
            SCOPED_TRACE(std::string(row.name) + " " + std::to_string(step.offsetBefore) + " to " +
                         std::to_string(step.offsetNow));
            Preferences one = allOff();
            one.*row.isOn = true;
            const bool isSession = std::string_view(row.name).starts_with("session");
            const auto make = isSession ? session : weekly;
            const auto found = fires(reading({make(row.level + step.offsetNow, later)}),
                                     reading({make(row.level + step.offsetBefore, later)}), one);
            const std::string kind = isSession ? "session" : "weekly_all";
            EXPECT_EQ(keys(found), step.isCrossed ? Keys{"thr-" + std::string(row.name) + "|" + id +
                                                         "|" + kind + "|1772447400"}
                                                  : Keys{});
        }
    }
}

TEST(Thresholds, aWindowThatWasNotThereBeforeCrossesFromZero)
{
    const Usage full = reading({session(100, later), weekly(100, later)});
    EXPECT_EQ(fires(full, reading({})).size(), 6);
}

TEST(Thresholds, aWindowWithoutAResetTimeCrossesNothing)
{
    const Usage before = reading({session(10, later), weekly(10, later)});
    EXPECT_TRUE(fires(reading({session(100, {}), weekly(100, {})}), before).empty());
}

TEST(Thresholds, ofAnotherPeriodTheReadingBeforeCountsAsZero)
{
    const std::pair<double, std::size_t> offsets[] = {{-18000, 1}, {-301, 1}, {-300, 0}, {-200, 0},
                                                      {0, 0},      {300, 0},  {301, 1}};
    for (const auto& [offset, count] : offsets) {
        SCOPED_TRACE(offset);
        const Instant before = later + seconds(static_cast<int>(offset));
        EXPECT_EQ(fires(reading({session(60, later)}), reading({session(70, before)})).size(),
                  count);
        EXPECT_EQ(fires(reading({weekly(60, later)}), reading({weekly(70, before)})).size(), count);
    }
    EXPECT_EQ(fires(reading({session(60, later)}), reading({session(70, {})})).size(), 1);
}

TEST(Thresholds, eachWeeklyWindowCrossesByItselfAndTheSessionFirst)
{
    const Usage usage = reading({weekly(92, later), session(91, later), opus(100, later),
                                 scoped("Desktop", 55, later), window("unknown", "", 50, later)});
    const auto found = fires(usage, reading({opus(95, later), session(0, later)}));
    const Keys expected = {
        "thr-session50|k3f9qz|session|1772447400",
        "thr-session90|k3f9qz|session|1772447400",
        "thr-weekly50|k3f9qz|weekly_all|1772447400",
        "thr-weekly50|k3f9qz|weekly_scoped|1772447400",
        "thr-weekly50|k3f9qz|unknown|1772447400",
        "thr-weekly90|k3f9qz|weekly_all|1772447400",
        "thr-weeklyLimit|k3f9qz|seven_day_opus|1772447400",
    };
    EXPECT_EQ(keys(found), expected);
    EXPECT_EQ(found[3], (Fire{Threshold::weekly50, "weekly_scoped", "Weekly (Desktop)", 55, later,
                              expected[3]}));
    EXPECT_EQ(found[0].windowTitle, "Session");
    EXPECT_EQ(found[6].windowTitle, "Weekly (Opus)");
}

TEST(Thresholds, theSessionIsTheFirstOfItsKindAndItsFamilyIsNotItsGroup)
{
    const auto found = fires(
        reading({window("burst", "session", 60, later), session(10, later), session(60, later)}),
        reading({session(0, later)}));
    EXPECT_EQ(keys(found), Keys{"thr-weekly50|k3f9qz|burst|1772447400"});
}

// Each has a key of its own, even where their reset times are the same.
TEST(Thresholds, twoWindowsOfOneKindCrossEachByItself)
{
    const Usage before = reading({scoped("Opus", 40, later), scoped("Sonnet", 95, later)});
    const Usage now = reading({scoped("Sonnet", 100, later), scoped("Opus", 60, later)});
    const auto found = fires(now, before);
    EXPECT_EQ(keys(found), (Keys{"thr-weekly50|k3f9qz|weekly_scoped/Opus|1772447400",
                                 "thr-weeklyLimit|k3f9qz|weekly_scoped/Sonnet|1772447400"}));
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[0].windowKind, "weekly_scoped/Opus");
    EXPECT_EQ(found[0].windowTitle, "Weekly (Opus)");
    EXPECT_EQ(found[1].windowKind, "weekly_scoped/Sonnet");
    EXPECT_TRUE(Thresholds::subsumedKeys(found).empty());
}

TEST(Thresholds, whatHasFiredInThisPeriodDoesNotFireAgain)
{
    const Usage before = reading({session(40, later)});
    const Usage now = reading({session(95, later)});
    const std::string at50 = "thr-session50|k3f9qz|session|1772447400";
    const std::string at90 = "thr-session90|k3f9qz|session|1772447400";
    EXPECT_EQ(keys(fires(now, before, allOn(), {at50})), Keys{at90});
    EXPECT_EQ(keys(fires(now, before, allOn(), {at90})), Keys{at50});
    EXPECT_EQ(keys(fires(now, before, allOn(), {at50, at90})), Keys{});
    EXPECT_EQ(fires(now, before, allOn(), {"thr-session50|other1|session|1772447400"}).size(), 2);
    EXPECT_EQ(fires(now, before, allOn(), {"thr-session50|k3f9qz|session|1772447399"}).size(), 2);
}

TEST(Thresholds, aHigherLevelOfTheSameWindowSaysTheLowerOnes)
{
    const auto fire = [](Threshold threshold, const std::string& kind) {
        return Fire{threshold, kind, "", 0, {}, kind + " " + std::string(name(threshold))};
    };
    EXPECT_TRUE(Thresholds::subsumedKeys({}).empty());
    EXPECT_TRUE(Thresholds::subsumedKeys({fire(Threshold::session50, "session")}).empty());
    EXPECT_EQ(Thresholds::subsumedKeys(
                  {fire(Threshold::session50, "session"), fire(Threshold::session90, "session"),
                   fire(Threshold::sessionLimit, "session"), fire(Threshold::weekly50, "a"),
                   fire(Threshold::weekly50, "b"), fire(Threshold::weekly90, "b"),
                   fire(Threshold::weeklyLimit, "c")}),
              (std::set<std::string>{"session session50", "session session90", "b weekly50"}));
    EXPECT_EQ(Thresholds::subsumedKeys(
                  {fire(Threshold::weeklyLimit, "a"), fire(Threshold::weekly90, "a")}),
              std::set<std::string>{"a weekly90"})
        << "whatever their order";
}

TEST(Thresholds, theWordsOfALevel)
{
    struct Body {
        Threshold threshold;
        double value;
        const char* expected;
    };
    const Body bodies[] = {
        {Threshold::session50, 50, "Work · Session usage crossed 50% (now 50%)"},
        {Threshold::weekly50, 62.4999, "Work · Session usage crossed 50% (now 62%)"},
        {Threshold::session90, 92.5, "Work · Session usage crossed 90% (now 93%)"},
        {Threshold::weekly90, 93.5, "Work · Session usage crossed 90% (now 94%)"},
        {Threshold::session90, 99.6, "Work · Session usage crossed 90% (now 100%)"},
        {Threshold::session90, 12345.6, "Work · Session usage crossed 90% (now 12346%)"},
    };
    for (const Body& row : bodies) {
        const Fire fire{row.threshold, "session", "Session", row.value, later, ""};
        EXPECT_EQ(Thresholds::body(fire, "Work", morning), row.expected);
    }
}

TEST(Thresholds, theWordsOfALimitTellTheTimeLeftUnlessItIsOver)
{
    const std::pair<double, const char*> rowsOfLeft[] = {
        {-60, ""},
        {0, ""},
        {0.000001, " — resets in now"},
        {0.4, " — resets in now"},
        {0.5, " — resets in 1m"},
        {119.4, " — resets in 1m"},
        {119.5, " — resets in 2m"},
        {3599, " — resets in 59m"},
        {3600, " — resets in 1h 0m"},
        {3660, " — resets in 1h 1m"},
        {86399, " — resets in 23h 59m"},
        {86400, " — resets in 1d 0h"},
        {90000, " — resets in 1d 1h"},
        {604800, " — resets in 7d 0h"},
    };
    for (const auto& [left, end] : rowsOfLeft) {
        for (const Threshold limit : {Threshold::sessionLimit, Threshold::weeklyLimit}) {
            const Fire fire{limit, "weekly_all", "Weekly", 100, after(left), ""};
            EXPECT_EQ(Thresholds::body(fire, "Work", morning),
                      std::string("Work · Weekly limit reached") + end);
        }
    }
    EXPECT_EQ(Thresholds::body({Threshold::weeklyLimit, "", "Weekly", 100, {}, ""}, "W", morning),
              "W · Weekly limit reached");
}

TEST(Thresholds, percentsThatAreNoSensibleNumbersHaveDefinedResults)
{
    struct Hostile {
        double before;
        double now;
        std::size_t crossed; // of the session's three
    };
    const Hostile all[] = {
        {0, nan, 0},       {nan, 100, 0},      {nan, nan, 0},     {0, infinity, 3},
        {infinity, 95, 0}, {-infinity, 95, 2}, {0, -infinity, 0}, {-1e300, 1e300, 3},
        {-5, 49, 0},       {-5, 10'001, 3},    {1e300, 1e300, 0}, {-1, -0.5, 0},
    };
    for (const auto& [before, now, crossed] : all) {
        SCOPED_TRACE(std::to_string(before) + " to " + std::to_string(now));
        EXPECT_EQ(fires(reading({session(now, later)}), reading({session(before, later)})).size(),
                  crossed);
    }
    const auto text = [](double value) {
        return Thresholds::body({Threshold::session50, "session", "Session", value, later, ""}, "W",
                                morning);
    };
    EXPECT_EQ(text(infinity), "W · Session usage crossed 50% (now inf%)");
    EXPECT_EQ(text(nan), "W · Session usage crossed 50% (now nan%)");
    EXPECT_EQ(text(-0.2), "W · Session usage crossed 50% (now 0%)");
    EXPECT_EQ(text(1e300).size(),
              std::string("W · Session usage crossed 50% (now %)").size() + 301);
}

TEST(Thresholds, resetTimesAtTheEndsOfTheCalendarHaveKeysAndWords)
{
    const auto far = fires(reading({session(95, yearLast)}), reading({session(1, yearLast)}));
    EXPECT_EQ(keys(far), (Keys{"thr-session50|k3f9qz|session|253402300799",
                               "thr-session90|k3f9qz|session|253402300799"}));
    const auto past = fires(reading({weekly(100, yearOne)}), reading({weekly(95, yearOne)}));
    ASSERT_EQ(keys(past), Keys{"thr-weeklyLimit|k3f9qz|weekly_all|-62135596800"});
    EXPECT_EQ(Thresholds::body(past[0], "Work", yearLast), "Work · Weekly limit reached");
    const auto ahead = fires(reading({weekly(100, yearLast)}), reading({weekly(95, yearLast)}));
    ASSERT_EQ(ahead.size(), 1);
    EXPECT_EQ(Thresholds::body(ahead[0], "Work", yearLast - hours(25)),
              "Work · Weekly limit reached — resets in 1d 1h");
}

TEST(Thresholds, namesWithMarkupLineFeedsAndBarsAreTakenAsTheyStand)
{
    const std::string kind = "<b>a|b</b>\n";
    const auto found = Thresholds::newlyFired(
        "i|d", steps(reading({window(kind, "weekly", 60, later)}), {}), allOn(), {});
    ASSERT_EQ(keys(found), Keys{"thr-weekly50|i|d|<b>a|b</b>\n|1772447400"});
    EXPECT_EQ(Thresholds::body(found[0], "<i>Ada</i>\n& Co", morning),
              "<i>Ada</i>\n& Co · <b>a|b</b>\n usage crossed 50% (now 60%)");
}

} // namespace
} // namespace vellumor::thresholdsTest
