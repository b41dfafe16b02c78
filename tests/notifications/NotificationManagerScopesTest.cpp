// Several windows of one kind, told apart by their scopes.

#include "notifications/NotifiedWorld.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>

namespace vellumor::notificationManagerScopesTest {
namespace {

using namespace test;

constexpr double day = 86'400;
constexpr double week = 7 * day;
const Instant opusEnd = after(3 * day);
const Instant sonnetEnd = after(4 * day);

LimitWindow opusOf(double percent, Instant resetsAt = opusEnd)
{
    return scoped("Opus", percent, resetsAt);
}
LimitWindow sonnetOf(double percent, Instant resetsAt = sonnetEnd)
{
    return scoped("Sonnet", percent, resetsAt);
}

// A world in which a reading comes every two minutes.
struct NotificationManagerScopesTest : testing::Test, NotifiedWorld {
    double at = 0;

    Told observe(std::vector<LimitWindow> windows)
    {
        at += 120;
        return NotifiedWorld::observe(reading(std::move(windows), after(at)));
    }
};

using Windows = std::vector<LimitWindow>;

// The endpoint moves the reset times by seconds, and has its rows in any order.
TEST_F(NotificationManagerScopesTest, twoThatStandStillTellNothing)
{
    for (const int order : {0, 1, 2}) {
        NotifiedWorld fresh;
        fresh.preferences.customThresholds = {{work.id, 33}};
        for (int i = 0; i < 10; ++i) {
            SCOPED_TRACE(std::to_string(order) + ": " + std::to_string(i));
            const seconds jitter(i * 7 % 40);
            Windows windows = {opusOf(60, opusEnd + jitter), sonnetOf(60, sonnetEnd + jitter)};
            if (order == 1 || (order == 2 && i % 2 == 1))
                std::ranges::reverse(windows);
            EXPECT_EQ(fresh.observe(reading(windows, after(i * 120.0))), Told{});
        }
        EXPECT_EQ(fresh.manager.rememberedAlerts(), 0);
    }
}

TEST_F(NotificationManagerScopesTest, eachCrossesByItself)
{
    observe({opusOf(40), sonnetOf(40)});
    EXPECT_EQ(observe({opusOf(60), sonnetOf(55)}),
              (Told{"Work · Weekly (Opus) usage crossed 50% (now 60%)",
                    "Work · Weekly (Sonnet) usage crossed 50% (now 55%)"}));
    EXPECT_EQ(observe({sonnetOf(55), opusOf(92)}),
              Told{"Work · Weekly (Opus) usage crossed 90% (now 92%)"});
    EXPECT_EQ(observe({opusOf(93), sonnetOf(55)}), Told{});
    EXPECT_EQ(observe({opusOf(93), sonnetOf(100)}),
              Told{"Work · Weekly (Sonnet) limit reached — resets in 3d 23h"});
}

TEST_F(NotificationManagerScopesTest, eachHasItsAlertsThoughTheirResetsAreTheSame)
{
    preferences.customThresholds = {{work.id, 75}};
    observe({opusOf(40), sonnetOf(40, opusEnd)});
    EXPECT_EQ(observe({opusOf(80), sonnetOf(80, opusEnd)}),
              (Told{"Work · Weekly (Opus) usage crossed 50% (now 80%)",
                    "Work · Weekly (Sonnet) usage crossed 50% (now 80%)",
                    "Work · Weekly (Opus) usage crossed 75% (now 80%)",
                    "Work · Weekly (Sonnet) usage crossed 75% (now 80%)"}));
    at = 3 * day;
    EXPECT_EQ(
        observe({opusOf(1, after(10 * day)), sonnetOf(1, after(10 * day))}),
        (Told{"Work · Weekly (Opus) usage has reset", "Work · Weekly (Sonnet) usage has reset"}));
}

TEST_F(NotificationManagerScopesTest, theLimitOfOneDoesNotSilenceTheOther)
{
    preferences = only({&Preferences::notifyWeeklyLimit});
    preferences.customThresholds = {{work.id, 75}};
    observe({opusOf(70), sonnetOf(70)});
    EXPECT_EQ(observe({opusOf(100), sonnetOf(80)}),
              (Told{"Work · Weekly (Opus) limit reached — resets in 2d 23h",
                    "Work · Weekly (Sonnet) usage crossed 75% (now 80%)"}));
}

TEST_F(NotificationManagerScopesTest, eachResetsByItself)
{
    preferences = only({&Preferences::notifyQuotaReset});
    observe({sonnetOf(40), opusOf(40)});
    at = 3 * day;
    EXPECT_EQ(observe({sonnetOf(40), opusOf(0, after(10 * day))}),
              Told{"Work · Weekly (Opus) usage has reset"});
    EXPECT_EQ(observe({opusOf(0, after(10 * day)), sonnetOf(40)}), Told{});
    at = 4 * day;
    EXPECT_EQ(observe({opusOf(0, after(10 * day))}), Told{"Work · Weekly (Sonnet) usage has reset"})
        << "though it has gone";
    EXPECT_EQ(observe({opusOf(0, after(10 * day)), sonnetOf(0, after(11 * day))}), Told{});
    EXPECT_EQ(observe({opusOf(0, after(10 * day))}), Told{});
    at = 11 * day;
    EXPECT_EQ(observe({opusOf(0, after(17 * day))}), Told{"Work · Weekly (Sonnet) usage has reset"})
        << "the other's has passed long ago";
}

// Whichever of them goes and comes, and in whatever order.
TEST_F(NotificationManagerScopesTest, oneThatGoesOrComesIsNoNews)
{
    const Windows both = {opusOf(60), sonnetOf(60)};
    const Windows turned = {sonnetOf(60), opusOf(60)};
    const Windows opusAlone = {opusOf(60)};
    const Windows sonnetAlone = {sonnetOf(60)};
    const std::vector<Windows> stories[] = {
        {both, opusAlone, both, opusAlone, both},
        {both, sonnetAlone, both, sonnetAlone, both},
        {both, opusAlone, turned, sonnetAlone, turned},
        {turned, opusAlone, both, sonnetAlone, opusAlone},
        {both, opusAlone, sonnetAlone, opusAlone, turned},
        {both, {}, both, {}, turned},
        {opusAlone, both, opusAlone, both, turned},
        {opusAlone, turned, opusAlone, both, sonnetAlone},
        {sonnetAlone, both, sonnetAlone, turned, opusAlone},
        {sonnetAlone, both, turned, both, both},
    };
    for (const auto& story : stories) {
        SCOPED_TRACE(&story - std::begin(stories));
        NotifiedWorld fresh;
        fresh.preferences.customThresholds = {{work.id, 33}};
        double elapsed = 0;
        for (Windows windows : story) {
            for (LimitWindow& one : windows)
                *one.resetsAt += seconds(static_cast<int>(elapsed / 120) * 7 % 40);
            EXPECT_EQ(fresh.observe(reading(windows, after(elapsed))), Told{}) << elapsed;
            elapsed += 120;
        }
        // Each is still known by the reset that it had.
        fresh.manager.observe(fresh.work, reading({}, after(3 * day + 60)), UsageSource::endpoint,
                              fresh.preferences, {}, 120);
        EXPECT_EQ(fresh.taken(),
                  Told{"Work · Weekly (" + std::string(story[0] == opusAlone ? "scoped" : "Opus") +
                       ") usage has reset"});
    }
}

TEST_F(NotificationManagerScopesTest, whatOneCrossedWhileItWasAwayIsTold)
{
    observe({opusOf(40), sonnetOf(40)});
    observe({opusOf(40)});
    EXPECT_EQ(observe({opusOf(40), sonnetOf(95)}),
              Told{"Work · Weekly (Sonnet) usage crossed 90% (now 95%)"});
}

// An alert is not told again in its period because the other one has come or gone.
TEST_F(NotificationManagerScopesTest, aFallAndARiseTellNothingAgain)
{
    observe({opusOf(40)});
    EXPECT_EQ(observe({opusOf(60)}), Told{"Work · Weekly (Opus) usage crossed 50% (now 60%)"});
    EXPECT_EQ(observe({sonnetOf(10), opusOf(45)}), Told{});
    EXPECT_EQ(observe({sonnetOf(10), opusOf(55)}), Told{});
    EXPECT_EQ(observe({sonnetOf(60), opusOf(45)}),
              Told{"Work · Weekly (Sonnet) usage crossed 50% (now 60%)"});
    EXPECT_EQ(observe({opusOf(55)}), Told{});
    EXPECT_EQ(observe({sonnetOf(45)}), Told{});
    EXPECT_EQ(observe({sonnetOf(60)}), Told{});
    EXPECT_EQ(observe({sonnetOf(95), opusOf(55)}),
              Told{"Work · Weekly (Sonnet) usage crossed 90% (now 95%)"});
}

TEST_F(NotificationManagerScopesTest, oneAloneIsTheSameWindowUnderAnotherName)
{
    observe({scoped("Opus", 60, opusEnd)});
    EXPECT_EQ(observe({scoped("Opus 5", 60, opusEnd + seconds(20))}), Told{});
    EXPECT_EQ(observe({scoped("", 92, opusEnd)}),
              Told{"Work · Weekly (scoped) usage crossed 90% (now 92%)"});
    EXPECT_EQ(observe({scoped("Opus", 40, opusEnd)}), Told{});
    EXPECT_EQ(observe({scoped("Sonnet", 95, opusEnd)}),
              Told{"Work · Weekly (Sonnet) usage crossed 50% (now 95%)"})
        << "of 90 it was told";
}

TEST_F(NotificationManagerScopesTest, oneWithoutAScopeIsToldFromOneWithIt)
{
    observe({scoped("", 40, sonnetEnd), opusOf(40)});
    EXPECT_EQ(observe({opusOf(60), scoped("", 40, sonnetEnd)}),
              Told{"Work · Weekly (Opus) usage crossed 50% (now 60%)"});
    EXPECT_EQ(observe({scoped("", 60, sonnetEnd), opusOf(60)}),
              Told{"Work · Weekly (scoped) usage crossed 50% (now 60%)"});
}

TEST_F(NotificationManagerScopesTest, theSecondOfOneKindAndScopeIsPassedOver)
{
    observe({opusOf(40), opusOf(95, sonnetEnd), sonnetOf(40), weekly(40, opusEnd),
             weekly(95, sonnetEnd)});
    EXPECT_EQ(observe({opusOf(60), opusOf(100, sonnetEnd), sonnetOf(40), weekly(60, opusEnd),
                       weekly(100, sonnetEnd)}),
              (Told{"Work · Weekly (Opus) usage crossed 50% (now 60%)",
                    "Work · Weekly usage crossed 50% (now 60%)"}));
    EXPECT_EQ(observe({weekly(60, opusEnd), opusOf(60)}), Told{});
}

// Half of them of one kind. Processor seconds for two readings.
double timeFor(int count)
{
    NotifiedWorld world;
    world.preferences = everything();
    world.preferences.customThresholds = {{world.work.id, 33}};
    const auto rows = [count](double percent) {
        Windows windows;
        for (int i = 0; i < count / 2; ++i) {
            const std::string number = std::to_string(i);
            windows.push_back(scoped("Model " + number, percent, opusEnd));
            windows.push_back(window("seven_day_" + number, "weekly", percent, opusEnd));
        }
        return windows;
    };
    const std::clock_t start = std::clock();
    world.observe(reading(rows(30), after(0)));
    EXPECT_EQ(world.observe(reading(rows(60), after(120))).size(),
              static_cast<std::size_t>(2 * count));
    return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

// A search through all rows for each of them would take 64 times as long for eight times as many.
TEST_F(NotificationManagerScopesTest, veryManyRowsTakeTheTimeOfASort)
{
    const double few = timeFor(3000);
    EXPECT_LT(timeFor(24'000), 20 * few);
}

} // namespace
} // namespace vellumor::notificationManagerScopesTest
