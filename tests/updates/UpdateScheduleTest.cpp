#include "updates/UpdateSchedule.h"

#include "support/FakeClock.h"
#include "support/TempFolder.h"
#include "updates/FakeTransport.h"
#include "updates/FeedTesting.h"

#include <gtest/gtest.h>

namespace vellumor::updateScheduleTest {
namespace {

using namespace std::chrono_literals;
using test::answered;
using test::release;

struct UpdateScheduleTest : testing::Test {
    test::TempFolder folder;
    FileStore files;
    UpdateStore store{files, folder.file("updates.json"), runAtOnce};
    test::FakeTransport transport;
    test::FakeClock clock;
    test::Maker maker;
    UpdateChecker checker{transport,
                          store,
                          clock,
                          {"https://maker.example.org/feed.json", maker.keyText(),
                           std::string(test::website), "1.2.3"}};
    std::chrono::milliseconds chance = 7min;
    std::vector<UpdateResult> told;
    std::unique_ptr<UpdateSchedule> schedule;

    UpdateScheduleTest() { transport.answer = answered(200, maker.feedOf(release("1.2.3", 1))); }

    void make(UpdateChecker& of)
    {
        schedule = std::make_unique<UpdateSchedule>(
            of, store, clock,
            [this](std::uint32_t bound) {
                EXPECT_EQ(std::chrono::milliseconds(bound), 30min);
                return static_cast<std::uint32_t>(chance.count());
            },
            [this](const UpdateResult& result) { told.push_back(result); });
    }
    void start()
    {
        make(checker);
        schedule->start();
    }
    [[nodiscard]] std::size_t asked() const { return transport.urls.size(); }
};

TEST_F(UpdateScheduleTest, theFirstCheckComesSomeMinutesAfterTheStartAndLaterByChance)
{
    start();
    clock.advance(12min - 1ms);
    EXPECT_EQ(asked(), 0U);
    clock.advance(1ms);
    EXPECT_EQ(asked(), 1U);
    EXPECT_EQ(told, std::vector<UpdateResult>{UpToDate()});
}

TEST_F(UpdateScheduleTest, theNextOnesComeOnceADayWithOneAlarmInBetween)
{
    start();
    clock.advance(12min);
    for (std::size_t day = 1; day <= 30; ++day) {
        EXPECT_EQ(asked(), day);
        EXPECT_EQ(clock.pendingAlarms(), 1U);
        EXPECT_EQ(clock.untilNextAlarm(), 24h + 7min);
        clock.advance(24h + 7min);
    }
}

TEST_F(UpdateScheduleTest, beforeTheStartAndWhileSwitchedOffThereIsNotEvenAnAlarm)
{
    make(checker);
    EXPECT_EQ(clock.pendingAlarms(), 0U);
    schedule->setAutomatic(true);
    EXPECT_EQ(clock.pendingAlarms(), 0U);
    schedule->start();
    EXPECT_EQ(clock.pendingAlarms(), 1U);
    schedule->setAutomatic(false);
    EXPECT_EQ(clock.pendingAlarms(), 0U);
    schedule->noteWake();
    clock.advance(72h);
    EXPECT_EQ(asked(), 0U);
}

TEST_F(UpdateScheduleTest, withoutAFeedThereIsNotEvenAnAlarm)
{
    UpdateChecker none(transport, store, clock, {"", "", "", "1.2.3"});
    make(none);
    EXPECT_FALSE(schedule->isConfigured());
    schedule->start();
    schedule->setAutomatic(true);
    schedule->noteWake();
    EXPECT_EQ(clock.pendingAlarms(), 0U);
}

TEST_F(UpdateScheduleTest, theUsersWishIsKept)
{
    start();
    EXPECT_TRUE(schedule->isAutomatic());
    schedule->setAutomatic(false);
    EXPECT_FALSE(schedule->isAutomatic());
    EXPECT_FALSE(UpdateStore(files, folder.file("updates.json"), runAtOnce).current().automatic);
    start();
    EXPECT_FALSE(schedule->isAutomatic());
    EXPECT_EQ(clock.pendingAlarms(), 0U);
    schedule->setAutomatic(true);
    EXPECT_TRUE(UpdateStore(files, folder.file("updates.json"), runAtOnce).current().automatic);
    clock.advance(7min);
    EXPECT_EQ(asked(), 1U);
}

TEST_F(UpdateScheduleTest, aStartWithinADayOfTheLastCheckWaitsForTheRestOfIt)
{
    store.save({true, 1, clock.now() - 20h});
    start();
    EXPECT_EQ(clock.untilNextAlarm(), 4h + 7min);
    store.save({true, 1, clock.now() - 23h - 58min});
    start();
    EXPECT_EQ(clock.untilNextAlarm(), 5min + 7min); // the start itself is left alone
}

TEST_F(UpdateScheduleTest, switchedOnAgainWithinADayItAsksNoSooner)
{
    start();
    clock.advance(12min);
    for (int i = 0; i < 10; ++i) {
        schedule->setAutomatic(false);
        schedule->setAutomatic(true);
    }
    clock.advance(24h);
    EXPECT_EQ(asked(), 1U);
    clock.advance(7min);
    EXPECT_EQ(asked(), 2U);
}

TEST_F(UpdateScheduleTest, aLastCheckInTheFutureSaysNothing)
{
    store.save({true, 1, clock.now() + 1000h});
    start();
    EXPECT_EQ(clock.untilNextAlarm(), 12min);
}

TEST_F(UpdateScheduleTest, withoutAnAnswerItTriesAgainInAnHourAndWithABadOneInADay)
{
    transport.answer = {}; // offline
    start();
    clock.advance(12min);
    EXPECT_EQ(asked(), 1U);
    EXPECT_EQ(clock.untilNextAlarm(), 1h + 7min);
    clock.advance(1h + 7min);
    EXPECT_EQ(asked(), 2U);
    transport.answer = answered(500);
    clock.advance(1h + 7min);
    EXPECT_EQ(asked(), 3U);
    EXPECT_EQ(clock.untilNextAlarm(), 24h + 7min);
    EXPECT_EQ(told.size(), 3U);
}

// Alarms stand still while the machine sleeps.
TEST_F(UpdateScheduleTest, afterASleepTheDayIsCountedByTheWallClock)
{
    start();
    clock.advance(12min);
    clock.jumpTo(clock.now() + 20h);
    schedule->noteWake();
    EXPECT_EQ(clock.untilNextAlarm(), 4h + 7min);
    clock.jumpTo(clock.now() + 20h);
    schedule->noteWake();
    EXPECT_EQ(clock.untilNextAlarm(), 5min + 7min);
    EXPECT_EQ(clock.pendingAlarms(), 1U);
}

TEST_F(UpdateScheduleTest, whileACheckIsUnderWayNoOtherIsBegun)
{
    transport.isHeld = true;
    start();
    clock.advance(12min);
    schedule->noteWake();
    schedule->setAutomatic(false);
    schedule->setAutomatic(true);
    EXPECT_EQ(clock.pendingAlarms(), 0U);
    clock.advance(48h);
    EXPECT_EQ(asked(), 1U);
    transport.letGo();
    EXPECT_EQ(told.size(), 1U);
    EXPECT_EQ(clock.pendingAlarms(), 1U);
}

TEST_F(UpdateScheduleTest, switchedOffDuringACheckItTellsAndStops)
{
    transport.isHeld = true;
    start();
    clock.advance(12min);
    schedule->setAutomatic(false);
    transport.letGo();
    EXPECT_EQ(told.size(), 1U);
    EXPECT_EQ(clock.pendingAlarms(), 0U);
}

TEST_F(UpdateScheduleTest, aNewerReleaseIsToldWithItsPage)
{
    transport.answer = answered(200, maker.feedOf(release("1.3.0", 2)));
    start();
    clock.advance(12min);
    const UpdateResult expected = UpdateAvailable{"1.3.0", "https://maker.example.org/vellumor"};
    EXPECT_EQ(told, std::vector<UpdateResult>{expected});
}

TEST_F(UpdateScheduleTest, whenItGoesDuringACheckNobodyIsTold)
{
    transport.isHeld = true;
    start();
    clock.advance(12min);
    schedule.reset();
    transport.letGo();
    EXPECT_TRUE(told.empty());
    EXPECT_EQ(clock.pendingAlarms(), 0U);
}

} // namespace
} // namespace vellumor::updateScheduleTest
