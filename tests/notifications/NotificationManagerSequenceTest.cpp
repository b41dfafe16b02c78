#include "notifications/NotificationManager.h"

#include "notifications/NotifiedWorld.h"

#include <gtest/gtest.h>

namespace vellumor::notificationManagerSequenceTest {
namespace {

using namespace test;

constexpr double week = 604800;
const Instant end = after(9000); // of a session; 12:00
const Instant nextEnd = after(27'000);
const Instant weekEnd = after(week / 2);

// One reading, and what it makes the user read.
struct Step {
    double at; // seconds after the morning
    std::vector<LimitWindow> windows;
    Told told = {};
    std::optional<UsageSource> source = UsageSource::endpoint;
    std::function<void(Preferences&)> change = {}; // of the settings, before
};

struct Story {
    const char* name;
    Preferences preferences;
    std::vector<Step> steps;
};

void expectTold(const Story& story)
{
    SCOPED_TRACE(story.name);
    NotifiedWorld world;
    world.preferences = story.preferences;
    for (const Step& step : story.steps) {
        SCOPED_TRACE(step.at);
        if (step.change)
            step.change(world.preferences);
        EXPECT_EQ(world.observe(reading(step.windows, after(step.at)), step.source), step.told);
    }
}

Preferences withCustom(Preferences preferences, double threshold)
{
    preferences.customThresholds = {{account().id, threshold}};
    return preferences;
}

const auto levels = {&Preferences::notifySession50, &Preferences::notifySession90,
                     &Preferences::notifySessionLimit};

const Preferences fixed = only(levels);
const Story levelStories[] = {
    {"a window climbs through its levels, each told once",
     fixed,
     {{0, {session(49.9, end)}},
      {60, {session(50, end)}, {"Work · Session usage crossed 50% (now 50%)"}},
      {120, {session(51, end)}},
      {180, {session(89.9, end)}},
      {240, {session(90.5, end)}, {"Work · Session usage crossed 90% (now 91%)"}},
      {300, {session(99.9, end)}},
      {360, {session(100, end)}, {"Work · Session limit reached — resets in 2h 24m"}},
      {420, {session(101, end)}}}},
    {"a jump tells the highest level and uses up the lower ones",
     fixed,
     {{0, {session(40, end)}},
      {60, {session(95, end)}, {"Work · Session usage crossed 90% (now 95%)"}},
      {120, {session(96, end)}},
      {180, {session(40, end)}},
      {240, {session(60, end)}},
      {300, {session(95, end)}}}},
    {"with the higher level off the lower one is told with the present value",
     only({&Preferences::notifySession50}),
     {{0, {session(40, end)}},
      {60, {session(95, end)}, {"Work · Session usage crossed 50% (now 95%)"}}}},
    {"a fall and a rise in one period tell nothing again",
     fixed,
     {{0, {session(40, end)}},
      {60, {session(55, end)}, {"Work · Session usage crossed 50% (now 55%)"}},
      {120, {session(45, end)}},
      {180, {session(55, end)}}}},
    {"a reset time that moves by 200 seconds is the same period",
     fixed,
     {{0, {session(40, end)}},
      {60, {session(60, end + seconds(200))}, {"Work · Session usage crossed 50% (now 60%)"}},
      {120, {session(45, end - seconds(200))}},
      {180, {session(61, end + seconds(100))}}}},
    {"in a new period what was before counts as zero",
     fixed,
     {{0, {session(60, end)}},
      {9060, {session(55, nextEnd)}, {"Work · Session usage crossed 50% (now 55%)"}},
      {9120, {session(95, nextEnd)}, {"Work · Session usage crossed 90% (now 95%)"}}}},
    {"each weekly window speaks for itself, level by level",
     only({&Preferences::notifyWeekly50, &Preferences::notifyWeekly90}),
     {{0, {weekly(10, weekEnd), opus(10, weekEnd), session(10, end)}},
      {60,
       {weekly(95, weekEnd), opus(55, weekEnd), session(99, end)},
       {"Work · Weekly (Opus) usage crossed 50% (now 55%)",
        "Work · Weekly usage crossed 90% (now 95%)"}}}},
    {"a window that comes later crosses from zero",
     only({&Preferences::notifyWeekly50}),
     {{0, {session(10, end)}},
      {60, {weekly(55, weekEnd)}, {"Work · Weekly usage crossed 50% (now 55%)"}}}},
    {"readings from caches come between and change nothing",
     fixed,
     {{0, {session(40, end)}},
      {60, {session(95, end)}, {}, UsageSource::sharedCache},
      {61, {session(100, nextEnd)}, {}, UsageSource::snapshot},
      {120, {session(55, end)}, {"Work · Session usage crossed 50% (now 55%)"}},
      {180, {session(95, end)}, {"Work · Session usage crossed 90% (now 95%)"}, UsageSource::cli}}},
    {"a level that is turned on later tells nothing that it lay below",
     only({}),
     {{0, {session(40, end)}},
      {60, {session(95, end)}},
      {120,
       {session(96, end)},
       {},
       UsageSource::endpoint,
       [](Preferences& preferences) { preferences.notifySession90 = true; }}}},
};

TEST(NotificationManagerSequence, levels)
{
    for (const Story& story : levelStories)
        expectTold(story);
}

const Story customLevelStories[] = {
    {"a fixed level that says the same is enough",
     withCustom(only({&Preferences::notifySession50}), 50),
     {{0, {session(40, end), weekly(40, weekEnd)}},
      {60,
       {session(55, end), weekly(55, weekEnd)},
       {"Work · Session usage crossed 50% (now 55%)",
        "Work · Weekly usage crossed 50% (now 55%)"}}}},
    {"without it the custom one speaks",
     withCustom(only({}), 50),
     {{0, {session(40, end)}},
      {60, {session(55, end)}, {"Work · Session usage crossed 50% (now 55%)"}}}},
    {"a limit that this reading tells of is enough",
     withCustom(only({&Preferences::notifySessionLimit}), 75),
     {{0, {session(70, end), weekly(70, weekEnd)}},
      {60,
       {session(100, end), weekly(100, weekEnd)},
       {"Work · Session limit reached — resets in 2h 29m",
        "Work · Weekly usage crossed 75% (now 100%)"}}}},
    {"and so it is of a weekly window",
     withCustom(only({&Preferences::notifyWeeklyLimit}), 75),
     {{0, {session(70, end), weekly(70, weekEnd)}},
      {60,
       {session(100, end), weekly(100, weekEnd)},
       {"Work · Weekly limit reached — resets in 3d 11h",
        "Work · Session usage crossed 75% (now 100%)"}}}},
    {"a fixed level of another number speaks beside it",
     withCustom(only({&Preferences::notifySession90}), 72.5),
     {{0, {session(70, end)}},
      {60,
       {session(95, end)},
       {"Work · Session usage crossed 90% (now 95%)",
        "Work · Session usage crossed 72.5% (now 95%)"}}}},
    {"another number in the same period does not speak again",
     withCustom(only({}), 60),
     {{0, {session(50, end)}},
      {60, {session(65, end)}, {"Work · Session usage crossed 60% (now 65%)"}},
      {120,
       {session(75, end)},
       {},
       UsageSource::endpoint,
       [](Preferences& preferences) { preferences.customThresholds.begin()->second = 70; }},
      {9060, {session(5, nextEnd)}},
      {9120, {session(75, nextEnd)}, {"Work · Session usage crossed 70% (now 75%)"}}}},
    {"the number is taken away",
     withCustom(only({}), 60),
     {{0, {session(50, end)}},
      {60,
       {session(65, end)},
       {},
       UsageSource::endpoint,
       [](Preferences& preferences) { preferences.customThresholds.clear(); }}}},
};

TEST(NotificationManagerSequence, customLevels)
{
    for (const Story& story : customLevelStories)
        expectTold(story);
}

const Preferences resets = only({&Preferences::notifyQuotaReset});
const Story resetStories[] = {
    {"a reset and what was crossed since come together, the level first",
     only({&Preferences::notifyQuotaReset, &Preferences::notifySession50}),
     {{8900, {session(95, end)}},
      {9060,
       {session(55, nextEnd)},
       {"Work · Session usage crossed 50% (now 55%)", "Work · Session usage has reset"}}}},
    {"several at once come in the order of their kinds",
     resets,
     {{0, {weekly(9, end), session(9, end), opus(9, end)}},
      {9060,
       {session(0, {})},
       {"Work · Session usage has reset", "Work · Weekly (Opus) usage has reset",
        "Work · Weekly usage has reset"}}}},
    {"after the machine has slept past the reset it is old news",
     resets,
     {{0, {session(40, end)}}, {9000 + 361, {session(1, nextEnd)}}, {9500, {}}}},
    {"just within the grace it is still news",
     resets,
     {{0, {session(40, end)}},
      {9000 + 360, {session(1, nextEnd)}, {"Work · Session usage has reset"}}}},
    {"a weekly window that stops reporting keeps its cadence",
     resets,
     {{0, {weekly(40, end)}},
      {9000, {weekly(0, {})}, {"Work · Weekly usage has reset"}},
      {9060, {weekly(1, end + seconds(604'800 + 250))}},
      {9120, {weekly(2, end + seconds(604'800 - 250))}},
      {9000 + week + 10, {weekly(0, {})}, {"Work · Weekly usage has reset"}}}},
    {"a cached reading past the reset tells nothing, the next one does",
     resets,
     {{0, {session(40, end)}},
      {9010, {}, {}, UsageSource::sharedCache},
      {9020, {}, {"Work · Session usage has reset"}}}},
    {"turned on after the reset was noticed",
     only({}),
     {{0, {session(40, end)}},
      {9010, {}},
      {9020,
       {},
       {},
       UsageSource::endpoint,
       [](Preferences& preferences) { preferences.notifyQuotaReset = true; }}}},
};

TEST(NotificationManagerSequence, resets)
{
    for (const Story& story : resetStories)
        expectTold(story);
}

const Preferences projected =
    only({&Preferences::notifyProjectedSession, &Preferences::notifyProjectedWeekly});
const Story forecastStories[] = {
    {"the most urgent forecast speaks and the others stay silent",
     projected,
     {{0, {weekly(90, weekEnd), session(80, end)}},
      {300,
       {weekly(90, weekEnd), session(80, end)},
       {"Work · on pace to hit the Session limit ~10:13"}},
      {600, {weekly(90, weekEnd), session(80, end)}},
      {660, {}}, // after which it must hold for two readings again
      {7200, {weekly(90, weekEnd), session(80, end)}},
      {7260, {weekly(90, weekEnd), session(80, end)}}}},
    {"within ninety minutes of the last alert the next forecast is used up",
     projected,
     {{0, {session(80, end)}},
      {300, {session(80, end)}, {"Work · on pace to hit the Session limit ~10:13"}},
      {600, {weekly(90, weekEnd)}},
      {900, {weekly(90, weekEnd)}},
      {960, {}},
      {7200, {weekly(90, weekEnd)}},
      {7500, {weekly(90, weekEnd)}}}},
    {"after ninety minutes to the second it speaks",
     projected,
     {{0, {session(80, end)}},
      {300, {session(80, end)}, {"Work · on pace to hit the Session limit ~10:13"}},
      {5640, {weekly(60, weekEnd)}},
      {5700, {weekly(60, weekEnd)}, {"Work · on pace to hit the Weekly limit ~Wednesday 20:08"}}}},
    {"a cached reading between two does not break the hold, nor count",
     projected,
     {{0, {session(80, end)}},
      {100, {session(80, end)}, {}, UsageSource::sharedCache},
      {200, {}, {}, UsageSource::snapshot},
      {300, {session(80, end + seconds(90))}, {"Work · on pace to hit the Session limit ~10:13"}}}},
    {"forecast, level, reset, custom level and closing of one reading",
     withCustom(everything(), 20),
     {{5300,
       {session(89, end), weekly(80, after(5400))},
       {},
       UsageSource::endpoint,
       [](Preferences& preferences) { preferences.sessionClosingLeadMinutes = 60; }},
      {5500,
       {session(89.9, end), weekly(55, after(5400 + week))},
       {"Work · on pace to hit the Session limit ~11:28",
        "Work · Weekly usage crossed 50% (now 55%)", "Work · Weekly usage has reset",
        "Work · Weekly usage crossed 20% (now 55%)",
        "Work · session window closes at 12:00 — 10% left"}}}},
};

TEST(NotificationManagerSequence, forecastsAndAllTheRestInTheirOrder)
{
    for (const Story& story : forecastStories)
        expectTold(story);
}

// What the settings ask for, told independently of the program: of each window the highest level
// that is on and lies above `before` and not above `now`.
std::vector<std::string> expectedOf(unsigned switches, double before, double now)
{
    constexpr double levelOf[] = {50, 90, 100};
    std::vector<std::string> told;
    for (unsigned family = 0; family < 2; ++family) {
        double highest = 0;
        for (unsigned i = 0; i < 3; ++i) {
            const bool isOn = (switches >> (family * 3 + i) & 1U) != 0;
            if (isOn && before < levelOf[i] && levelOf[i] <= now)
                highest = levelOf[i];
        }
        const std::string title = family == 0 ? "Session" : "Weekly";
        if (highest == 100)
            told.push_back("Work · " + title + " limit reached — resets in 1h 59m");
        else if (highest > 0)
            told.push_back("Work · " + title + " usage crossed " + (highest == 50 ? "50" : "90") +
                           "% (now " + std::to_string(static_cast<int>(now)) + "%)");
    }
    return told;
}

TEST(NotificationManagerSequence, allCombinationsOfTheSixLevelsOverAllJumps)
{
    bool Preferences::*const levelSwitches[] = {
        &Preferences::notifySession50,    &Preferences::notifySession90,
        &Preferences::notifySessionLimit, &Preferences::notifyWeekly50,
        &Preferences::notifyWeekly90,     &Preferences::notifyWeeklyLimit,
    };
    const double stops[] = {0, 49, 50, 51, 89, 90, 91, 99, 100, 120};
    const Instant resetsAt = after(7200);
    int count = 0;
    for (unsigned switches = 0; switches < 64; ++switches) {
        Preferences preferences = only({});
        for (unsigned i = 0; i < 6; ++i)
            preferences.*levelSwitches[i] = (switches >> i & 1U) != 0;
        for (const double before : stops) {
            for (const double now : stops) {
                NotifiedWorld world;
                world.preferences = preferences;
                const auto observe = [&](double percent, int at) {
                    return world.observe(reading(
                        {session(percent, resetsAt), weekly(percent, resetsAt)}, after(at)));
                };
                ASSERT_EQ(observe(before, 0), Told{});
                ASSERT_EQ(observe(now, 60), expectedOf(switches, before, now))
                    << switches << ": " << before << " to " << now;
                if (before < now) { // what was crossed, told or not, is used up
                    ASSERT_EQ(observe(before, 120), Told{});
                    ASSERT_EQ(observe(now, 180), Told{}) << switches << ": again";
                }
                ++count;
            }
        }
    }
    EXPECT_EQ(count, 6400);
}

} // namespace
} // namespace vellumor::notificationManagerSequenceTest
