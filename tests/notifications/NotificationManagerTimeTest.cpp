// By which clock the manager goes, and what of the forecasts is an account's own.

#include "notifications/NotifiedWorld.h"

#include <gtest/gtest.h>

namespace vellumor::notificationManagerTimeTest {
namespace {

using namespace test;

const Instant end = after(9000); // of a session; 12:00

struct NotificationManagerTimeTest : testing::Test, NotifiedWorld {
    Told session(double percent, double at)
    {
        return observe(reading({test::session(percent, end)}, after(at)));
    }
};

TEST_F(NotificationManagerTimeTest, aKeyIsForgottenByTheRealClock)
{
    preferences = only({&Preferences::notifySession50});
    session(40, 0);
    session(60, 60);
    ASSERT_EQ(manager.rememberedAlerts(), 1);
    ahead = hours(8 * 24) + seconds(8880); // to the end of the eighth day after the reset
    session(60, 120);
    EXPECT_EQ(manager.rememberedAlerts(), 1);
    ahead = hours(9 * 24);
    session(60, 180);
    EXPECT_EQ(manager.rememberedAlerts(), 0);
}

// Everything else goes by the time of the reading, however the clock is set meanwhile.
TEST_F(NotificationManagerTimeTest, aClockThatIsAnHourWrongChangesNoAlert)
{
    struct Step {
        double at;
        std::vector<LimitWindow> windows;
        Told told;
    };
    const Instant weekEnd = after(302'400);
    const Step steps[] = {
        {0, {test::session(80, end)}, {}},
        {300, {test::session(80, end)}, {"Work · on pace to hit the Session limit ~10:13"}},
        {5640, {weekly(60, weekEnd)}, {}},
        {5700, {weekly(60, weekEnd)}, {"Work · on pace to hit the Weekly limit ~Wednesday 20:08"}},
        {7000, {test::session(89, end)}, {}},
        {7500, {test::session(89, end)}, {"Work · session window closes at 12:00 — 11% left"}},
        {7560, {test::session(100, end)}, {"Work · Session limit reached — resets in 24m"}},
        {9300, {}, {"Work · Session usage has reset"}},
        {9400, {test::session(10, after(27'000))}, {}},
        {27'361, {}, {}}, // too long ago to be news
    };
    const hours settings[][2] = {{hours(0), hours(0)},
                                 {hours(1), hours(1)},
                                 {hours(-1), hours(-1)},
                                 {hours(1), hours(-1)},
                                 {hours(-1), hours(1)}};
    for (const auto& [odd, even] : settings) {
        NotifiedWorld world;
        world.preferences =
            only({&Preferences::notifyProjectedSession, &Preferences::notifyProjectedWeekly,
                  &Preferences::notifySessionClosing, &Preferences::notifySessionLimit,
                  &Preferences::notifyQuotaReset});
        bool isOdd = false;
        for (const Step& step : steps) {
            SCOPED_TRACE(std::to_string(step.at) + ": " + std::to_string(odd.count()) + " " +
                         std::to_string(even.count()));
            world.ahead = isOdd ? odd : even;
            EXPECT_EQ(world.observe(reading(step.windows, after(step.at))), step.told);
            if (!step.told.empty() || step.at == 7000)
                isOdd = !isOdd;
        }
    }
}

// Neither breaks the other's hold, nor is it silenced by the other's alert.
TEST_F(NotificationManagerTimeTest, eachAccountHasItsOwnForecasts)
{
    preferences = only({&Preferences::notifyProjectedSession});
    const Account home = account("other1", "Home");
    const auto atHome = [&](double at) {
        return observe(home, reading({test::session(80, end)}, after(at)));
    };
    EXPECT_EQ(session(80, 0), Told{});
    EXPECT_EQ(atHome(0), Told{});
    EXPECT_EQ(session(80, 300), Told{"Work · on pace to hit the Session limit ~10:13"});
    EXPECT_EQ(atHome(300), Told{"Home · on pace to hit the Session limit ~10:13"});
    EXPECT_EQ(session(80, 600), Told{});
    EXPECT_EQ(atHome(600), Told{});
}

} // namespace
} // namespace vellumor::notificationManagerTimeTest
