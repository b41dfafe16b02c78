#include "app/state/Poller.h"

#include "app/state/AppWorld.h"

#include <gtest/gtest.h>

namespace vellumor::pollerTest {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using test::AppWorld;
using test::Gate;

struct PollerTest : testing::Test, AppWorld {
    bool isOnline = true;
    double jitter = 0;
    int ticksDone = 0;
    Poller poller{{state, clock, [this] { return isOnline; }, [this] { return jitter; },
                   [this](Instant) { return afterTick(); }}};

    Task<> afterTick()
    {
        ++ticksDone;
        co_return;
    }
    void startWith(const std::vector<std::string>& names)
    {
        for (const std::string& name : names)
            add(name);
        rescan();
        poller.startLoop(true);
        settle();
    }
    void pass(seconds time)
    {
        for (const auto end = clock.now() + time; clock.now() < end;) {
            clock.advance(milliseconds(500));
            settle();
        }
    }
};

TEST_F(PollerTest, aStartGivesAFullRoundAndThenOneFetchASlot)
{
    startWith({"ada", "ben"});
    EXPECT_EQ(calls(), 1);
    pass(seconds(2));
    EXPECT_EQ(calls(), 2); // two seconds apart
    pass(seconds(59));
    EXPECT_EQ(calls(), 2);
    pass(seconds(1));
    EXPECT_EQ(calls(), 3); // two minutes for two accounts
    pass(seconds(600));
    EXPECT_EQ(calls(), 13);
}

TEST_F(PollerTest, theJitterStretchesTheSlot)
{
    add("ada");
    rescan();
    state.recomputeEffectiveInterval(clock.now());
    jitter = 0.1;
    poller.startLoop(false);
    pass(seconds(131));
    EXPECT_EQ(calls(), 0);
    pass(seconds(1));
    EXPECT_EQ(calls(), 1);
}

TEST_F(PollerTest, offlineNothingIsDueAndTheReturnGivesOneFullRound)
{
    add("ada");
    add("ben");
    rescan();
    isOnline = false;
    poller.startLoop(true);
    EXPECT_FALSE(poller.isRunning());
    pass(seconds(300));
    EXPECT_EQ(calls(), 0);
    poller.didWake(); // still offline
    settle();
    EXPECT_EQ(calls(), 0);
    isOnline = true;
    poller.observeNetwork(true);
    pass(seconds(10));
    EXPECT_EQ(calls(), 2);
    poller.observeNetwork(false);
    pass(seconds(300));
    EXPECT_EQ(calls(), 2);
}

TEST_F(PollerTest, aSleepEndsTheLoopAndATickUnderWayIsFinished)
{
    add("ada");
    rescan();
    Gate slow;
    others.gates = {&slow};
    poller.startLoop(true);
    settle();
    poller.willSleep();
    slow.open();
    settle();
    EXPECT_TRUE(of("ada").usage);
    EXPECT_EQ(ticksDone, 1);
    pass(seconds(600));
    EXPECT_EQ(calls(), 1);
    poller.didWake();
    settle();
    EXPECT_EQ(calls(), 2);
}

// A wake of which no sleep was told.
TEST_F(PollerTest, aLoopThatRunsIsReplacedByOneRoundAndItsOwnTicks)
{
    startWith({"ada"});
    pass(seconds(30));
    ASSERT_EQ(calls(), 1);
    poller.didWake();
    settle();
    EXPECT_EQ(calls(), 2);
    for (int tick = 0; tick < 3; ++tick) {
        pass(seconds(119));
        EXPECT_EQ(calls(), 2 + tick);
        pass(seconds(1));
        EXPECT_EQ(calls(), 3 + tick);
    }
}

TEST_F(PollerTest, aRoundOfALoopThatWasReplacedEndsWithoutMovingATick)
{
    add("ada");
    rescan();
    Gate slow;
    others.gates = {&slow};
    poller.startLoop(true);
    settle();
    poller.didWake();
    settle();
    ASSERT_EQ(calls(), 2);
    ASSERT_EQ(ticksDone, 1);
    pass(seconds(30));
    slow.open();
    settle();
    EXPECT_EQ(ticksDone, 2);
    pass(seconds(89));
    EXPECT_EQ(calls(), 2);
    pass(seconds(1));
    EXPECT_EQ(calls(), 3);
    pass(seconds(119));
    EXPECT_EQ(calls(), 3);
    pass(seconds(1));
    EXPECT_EQ(calls(), 4);
}

TEST_F(PollerTest, aHealthyProgramScansOnceAnHour)
{
    add("ada");
    rescan();
    const int before = scans;
    clock.advance(milliseconds(3'599'999));
    waitFor(poller.tick(false));
    EXPECT_EQ(scans, before);
    clock.advance(milliseconds(1));
    waitFor(poller.tick(false));
    EXPECT_EQ(scans, before + 1);
    waitFor(poller.tick(false));
    EXPECT_EQ(scans, before + 1);
}

TEST_F(PollerTest, anAccountInTroubleIsLookedAtOnceAnInterval)
{
    add("ada", TokenStatus::needsApproval);
    rescan();
    const int before = scans;
    state.recomputeEffectiveInterval(clock.now());
    clock.advance(milliseconds(119'999));
    waitFor(poller.tick(false));
    EXPECT_EQ(scans, before);
    clock.advance(milliseconds(1));
    waitFor(poller.tick(false));
    EXPECT_EQ(scans, before + 1);
}

TEST_F(PollerTest, ofTheErrorsOfALivingTokenThoseAreLookedAtThatAnotherTokenMayEnd)
{
    using Kind = UsageFetchError::Kind;
    const struct {
        std::optional<Kind> error;
        bool isLookedAt;
    } rows[] = {
        {std::nullopt, false},      {Kind::keychain, true},   {Kind::noService, true},
        {Kind::unauthorized, true}, {Kind::http, false},      {Kind::rateLimited, false},
        {Kind::decode, false},      {Kind::transport, false}, {Kind::forbidden, false},
    };
    add("ada");
    rescan();
    for (const auto& [error, isLookedAt] : rows) {
        SCOPED_TRACE(error ? test::failure(*error).description() : "none");
        FetchOutcome outcome;
        if (error)
            outcome.error = test::failure(*error);
        state.apply(outcome, id("ada"));
        const int before = scans;
        clock.advance(seconds(120));
        waitFor(poller.tick(false));
        EXPECT_EQ(scans, before + (isLookedAt ? 1 : 0));
    }
}

TEST_F(PollerTest, anAccountThatIsNotTrackedIsNoTrouble)
{
    add("ada", TokenStatus::needsApproval);
    rescan();
    state.setTracked(id("ada"), false);
    const int before = scans;
    clock.advance(seconds(600));
    waitFor(poller.tick(false));
    EXPECT_EQ(scans, before);
}

TEST_F(PollerTest, aScanThatFailsIsNotRepeatedBeforeItsTime)
{
    add("ada", TokenStatus::needsApproval);
    rescan();
    found.scanFailed = true;
    state.recomputeEffectiveInterval(clock.now());
    int expected = scans;
    for (int interval = 0; interval < 3; ++interval) {
        clock.advance(milliseconds(119'999));
        waitFor(poller.tick(false));
        EXPECT_EQ(scans, expected);
        clock.advance(milliseconds(1));
        waitFor(poller.tick(false));
        EXPECT_EQ(scans, ++expected);
    }
}

TEST_F(PollerTest, aBlockedAccountIsNoTrouble)
{
    add("ada", TokenStatus::needsApproval);
    rescan();
    FetchOutcome forbidden;
    forbidden.error = test::failure(UsageFetchError::Kind::forbidden);
    state.apply(forbidden, id("ada"));
    const int before = scans;
    clock.advance(seconds(600));
    waitFor(poller.tick(false));
    EXPECT_EQ(scans, before);
}

TEST_F(PollerTest, withoutAccountsTheTicksGoOn)
{
    const auto start = clock.now();
    poller.startLoop(true);
    settle();
    for (int tick = 0; tick < 5; ++tick) { // the start, and one every two minutes
        EXPECT_EQ(ticksDone, tick + 1);
        EXPECT_EQ(state.lastUpdated(), start + tick * seconds(120));
        pass(seconds(120));
    }
    EXPECT_EQ(calls(), 0);
}

TEST_F(PollerTest, aLoopThatTheNetworkEndedBeginsAnewWithOneFullRound)
{
    startWith({"ada", "ben"});
    pass(seconds(30));
    ASSERT_EQ(calls(), 2);
    isOnline = false;
    poller.observeNetwork(false);
    EXPECT_FALSE(poller.isRunning());
    pass(seconds(300));
    EXPECT_EQ(calls(), 2);
    isOnline = true;
    poller.observeNetwork(true);
    EXPECT_TRUE(poller.isRunning());
    settle();
    pass(seconds(61)); // the round takes two seconds, and the slot is a minute
    EXPECT_EQ(calls(), 4);
    pass(seconds(1));
    EXPECT_EQ(calls(), 5);
    pass(seconds(59));
    EXPECT_EQ(calls(), 5);
}

TEST_F(PollerTest, aStepOfTheWallClockChangesNothingInTheSpacing)
{
    using std::chrono::hours;
    const hours jumps[] = {hours(3), hours(-3), hours(240), hours(-240)};
    startWith({"ada", "ben"});
    pass(seconds(2));
    auto expected = calls();
    ASSERT_EQ(expected, 2);
    for (const auto& jump : jumps) {
        SCOPED_TRACE(jump.count());
        clock.advance(seconds(20));
        clock.jumpTo(clock.now() + jump);
        settle();
        auto rest = seconds(40);
        for (int tick = 0; tick < 4; ++tick) {
            EXPECT_EQ(clock.untilNextAlarm(), rest);
            clock.advance(rest - milliseconds(1));
            settle();
            EXPECT_EQ(calls(), expected);
            clock.advance(milliseconds(1));
            settle();
            EXPECT_EQ(calls(), ++expected);
            rest = seconds(60);
        }
        EXPECT_EQ(state.lastUpdated(), clock.now());
    }
}

} // namespace
} // namespace vellumor::pollerTest
