#include "app/StatusPublisher.h"

#include "app/state/AppStateTesting.h"

namespace vellumor::statusPublisherTest {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

struct FakeStatusService final : StatusService {
    Handlers handlers;
    int changes = 0;

    void start(Handlers given) override { handlers = std::move(given); }
    void announceChange() override { ++changes; }
};

struct StatusPublisherTest : test::AppStateTesting {
    FakeStatusService service;
    int openings = 0;
    StatusPublisher publisher{
        {state, clock, service, [](Instant) { return "TIME"; }, [this] { ++openings; }}};

    // With one account, of which a reading is known.
    void begin()
    {
        publisher.start();
        add("ada");
        rescan();
        applyTo("ada", read(UsageSource::endpoint));
        settle();
        service.changes = 0;
    }
    StatusReport report() { return service.handlers.report(); }
};

TEST_F(StatusPublisherTest, theReportIsWhatIsKnownNow)
{
    publisher.start();
    EXPECT_EQ(report(), StatusReport());
    add("ada");
    rescan();
    settle();
    ASSERT_EQ(report().accounts.size(), 1U);
    EXPECT_EQ(report().accounts[0].name, "ada");
    EXPECT_TRUE(report().accounts[0].windows.empty());
    applyTo("ada", read(UsageSource::endpoint));
    settle();
    ASSERT_EQ(report().accounts[0].windows.size(), 3U);
    EXPECT_EQ(report().accounts[0].windows[0].percentText, "40%");
    EXPECT_EQ(report().updatedAt, clock.now());
}

TEST_F(StatusPublisherTest, aChangeIsToldOnce)
{
    begin();
    FetchOutcome outcome = read(UsageSource::endpoint);
    outcome.usage->windows[0].percent = 55;
    applyTo("ada", outcome);
    applyTo("ada", outcome);
    settle();
    EXPECT_EQ(service.changes, 1);
}

TEST_F(StatusPublisherTest, whatIsNotShownIsNoChange)
{
    begin();
    state.recomputeEffectiveInterval(clock.now());
    settle();
    EXPECT_EQ(service.changes, 0);
    FetchOutcome same = read(UsageSource::sharedCache); // the same numbers from elsewhere
    same.usage->fetchedAt = of("ada").usage->fetchedAt;
    applyTo("ada", same);
    settle();
    EXPECT_EQ(service.changes, 0);
    state.rename(account("ada"), "Ada");
    settle();
    EXPECT_EQ(service.changes, 1);
}

TEST_F(StatusPublisherTest, aReadingThatGrowsOldIsAChange)
{
    begin();
    EXPECT_EQ(report().accounts[0].state, "ok");
    clock.advance(seconds(300));
    EXPECT_EQ(service.changes, 0);
    clock.advance(seconds(100000));
    EXPECT_EQ(service.changes, 1);
    EXPECT_EQ(report().accounts[0].state, "stale");
}

TEST_F(StatusPublisherTest, whoeverAsksTakesNoChangeAway)
{
    begin();
    clock.jumpTo(clock.now() + seconds(100000)); // as after a sleep, before the alarm
    EXPECT_EQ(report().accounts[0].state, "stale");
    clock.advance(seconds(100000));
    EXPECT_EQ(service.changes, 1);
}

TEST_F(StatusPublisherTest, howeverManyAskItIsMadeOnceASecond)
{
    begin();
    FetchOutcome outcome = read(UsageSource::endpoint);
    outcome.usage->windows[0].resetsAt = clock.now() + seconds(7200);
    applyTo("ada", outcome);
    settle();
    EXPECT_EQ(report().accounts[0].windows[0].resetText, "2h 0m");
    clock.advance(milliseconds(59700));
    EXPECT_EQ(report().accounts[0].windows[0].resetText, "1h 59m");
    clock.advance(milliseconds(999));
    EXPECT_EQ(report().accounts[0].windows[0].resetText, "1h 59m"); // half a second behind
    clock.advance(milliseconds(1));
    EXPECT_EQ(report().accounts[0].windows[0].resetText, "1h 58m");
}

TEST_F(StatusPublisherTest, aRefreshIsThatOfThePopoverAndRefusedWithinTwentySeconds)
{
    begin();
    const auto before = calls();
    EXPECT_TRUE(service.handlers.refresh());
    for (int i = 0; i < 100; ++i)
        EXPECT_FALSE(service.handlers.refresh());
    settle();
    EXPECT_EQ(calls(), before + 1);
    clock.advance(seconds(20));
    EXPECT_TRUE(service.handlers.refresh());
    settle();
    EXPECT_EQ(calls(), before + 2);
}

TEST_F(StatusPublisherTest, thePopoverIsOpenedByWhoeverOwnsIt)
{
    begin();
    service.handlers.openPopover();
    EXPECT_EQ(openings, 1);
}

} // namespace
} // namespace vellumor::statusPublisherTest
