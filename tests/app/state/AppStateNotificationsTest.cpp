// What of the readings and outcomes reaches the user as notifications.

#include "app/state/AppStateTesting.h"

namespace vellumor::appStateNotificationsTest {
namespace {

using std::chrono::hours;
using std::chrono::seconds;
using test::Names;

struct AppStateNotificationsTest : test::AppStateTesting {
    AppStateNotificationsTest()
    {
        state.updatePreferences([](Preferences& all) { all.notificationsEnabled = true; });
        add("ada");
        rescan();
    }

    // A reading with a session of so many percent that ends in two hours.
    void apply(double percent, UsageSource source = UsageSource::endpoint)
    {
        FetchOutcome outcome = read(source);
        LimitWindow& session = outcome.usage->windows[0];
        session.kind = session.group = "session";
        session.percent = percent;
        session.resetsAt = ends;
        applyTo("ada", outcome);
        clock.advance(seconds(60));
    }
    const Instant ends = clock.now() + hours(2);
};

TEST_F(AppStateNotificationsTest, aLimitThatIsReachedIsToldOnce)
{
    apply(80);
    EXPECT_EQ(delivered, Names());
    apply(93);
    apply(94);
    EXPECT_EQ(delivered, Names{"ada · Session usage crossed 90% (now 93%)"});
}

TEST_F(AppStateNotificationsTest, onlyReadingsFromTheEndpointCount)
{
    apply(80);
    apply(95, UsageSource::sharedCache);
    apply(95, UsageSource::vscodeCache);
    apply(95, UsageSource::snapshot);
    EXPECT_EQ(delivered, Names());
    apply(95, UsageSource::cli);
    EXPECT_EQ(delivered, Names{"ada · Session usage crossed 90% (now 95%)"});
}

TEST_F(AppStateNotificationsTest, theSettingOfTheMomentCounts)
{
    apply(80);
    state.updatePreferences([](Preferences& all) { all.notificationsEnabled = false; });
    apply(95);
    state.updatePreferences([](Preferences& all) { all.notificationsEnabled = true; });
    apply(96);
    EXPECT_EQ(delivered, Names());
    apply(100);
    EXPECT_EQ(delivered.size(), 1U);
}

TEST_F(AppStateNotificationsTest, aRefusalIsToldAtItsBeginning)
{
    applyTo("ada", failed(UsageFetchError::Kind::forbidden));
    applyTo("ada", failed(UsageFetchError::Kind::forbidden));
    EXPECT_EQ(delivered, Names{"ada · Blocked while updating usage numbers (HTTP 403)"});
    apply(10);
    applyTo("ada", failed(UsageFetchError::Kind::forbidden));
    EXPECT_EQ(delivered.size(), 2U);
}

TEST_F(AppStateNotificationsTest, anOutcomeOfAnAccountThatHasGoneIsNotTold)
{
    const std::string gone = id("ada");
    leaveOnly({});
    add("ben");
    rescan();
    delivered.clear();
    state.apply(failed(UsageFetchError::Kind::forbidden), gone);
    EXPECT_EQ(delivered, Names());
}

// Nothing is fetched for it by itself; what the user asks for is answered.
TEST_F(AppStateNotificationsTest, aSignedOutAccountIsToldOfWhenTheUserRefreshes)
{
    leaveOnly({});
    add("ben", TokenStatus::signedOut);
    rescan();
    delivered.clear();
    EXPECT_EQ(of("ben").revival, RevivalStatus::needsSignIn);
    waitFor(state.refreshNext());
    EXPECT_EQ(delivered, Names());
    waitFor(state.refresh(true));
    EXPECT_EQ(delivered, Names{"ben · Sign in to this account in Claude Code"});
}

} // namespace
} // namespace vellumor::appStateNotificationsTest
