#include "telemetry/LiveTelemetryRecorder.h"

#include "telemetry/TelemetryTesting.h"

#include <gtest/gtest.h>

namespace vellumor::liveTelemetryRecorderTest {
namespace {

struct LiveTelemetryRecorderTest : testing::Test, test::TelemetryWorld {};

TEST(TelemetryRecorder, theOneThatIsNoneTakesEverything)
{
    TelemetryRecorder& none = TelemetryRecorder::none();
    none.capture(TelemetryEvent::onboardingCompleted());
    none.noteServed("cli");
    none.noteFailure("usage_401", "endpoint");
    none.noteReviveUnavailable();
    none.noteNotification();
    none.notePopoverOpened();
    none.noteAccounts(7);
    EXPECT_EQ(&none, &TelemetryRecorder::none());
}

TEST_F(LiveTelemetryRecorderTest, eachNoteCountsInItsOwnPlaceAndIsKept)
{
    recorder.noteServed("sharedCache");
    recorder.noteReviveUnavailable();
    recorder.noteReviveUnavailable();
    recorder.notePopoverOpened();
    for (int i = 0; i < 3; ++i)
        recorder.noteNotification();
    TelemetryCounters counters;
    counters.popoverOpens = 1;
    counters.reviveUnavailable = 2;
    counters.notifications = 3;
    EXPECT_EQ(onDisk().counters, counters);
    EXPECT_EQ(onDisk().servedBy.at("sharedCache"), 1);
    EXPECT_TRUE(outlet.given.empty());
}

TEST_F(LiveTelemetryRecorderTest, aFailureIsCountedItsCategoryKeptOnceAndADiagnosticSent)
{
    recorder.noteFailure("usage_401", "endpoint");
    recorder.noteFailure("usage_401", "endpoint");
    recorder.noteFailure("no_service", "keychain");
    EXPECT_EQ(onDisk().counters.failures, 3);
    EXPECT_EQ(onDisk().failureCategories, (std::vector<std::string>{"usage_401", "no_service"}));
    ASSERT_EQ(outlet.names(), (std::vector<std::string>{"diagnostic", "diagnostic"}));
    EXPECT_EQ(outlet.given[1].properties.at("category"), "no_service");
    EXPECT_EQ(outlet.given[1].properties.at("layer"), "keychain");
}

TEST_F(LiveTelemetryRecorderTest, failuresAreCountedThoughNoneMayBeTold)
{
    store.update([](TelemetryConfig& config) { config.diagnosticsEnabled = false; });
    recorder.noteFailure("usage_401", "endpoint");
    EXPECT_EQ(onDisk().counters.failures, 1);
    EXPECT_TRUE(outlet.given.empty());
}

TEST_F(LiveTelemetryRecorderTest, theSecondAccountIsToldOnceInTheInstallationsLife)
{
    recorder.noteAccounts(0);
    recorder.noteAccounts(1);
    EXPECT_TRUE(outlet.given.empty());
    EXPECT_FALSE(onDisk().multiAccountReached);
    recorder.noteAccounts(2);
    recorder.noteAccounts(3);
    EXPECT_EQ(outlet.names(), std::vector<std::string>{"multi_account_reached"});
    EXPECT_TRUE(onDisk().multiAccountReached);
}

TEST_F(LiveTelemetryRecorderTest, twoAccountsThatMayNotBeToldAreNotToldLaterEither)
{
    store.update([](TelemetryConfig& config) { config.productAnalyticsEnabled = false; });
    recorder.noteAccounts(2);
    EXPECT_TRUE(onDisk().multiAccountReached);
    store.update([](TelemetryConfig& config) { config.productAnalyticsEnabled = true; });
    recorder.noteAccounts(2);
    EXPECT_TRUE(outlet.given.empty());
}

TEST_F(LiveTelemetryRecorderTest, theDailyEventTellsThePeriodThatEndsWithIt)
{
    recorder.noteServed("cli");
    recorder.notePopoverOpened();
    clock.advance(std::chrono::hours(1));
    const auto kept = recorder.beginSpineIfDue(clock.now());
    ASSERT_TRUE(kept);
    EXPECT_EQ(kept->counters.popoverOpens, 1);
    recorder.finishSpine(*kept, {false, 2, false, false, false}, clock.now());
    ASSERT_EQ(outlet.names(), std::vector<std::string>{"day_active"});
    EXPECT_EQ(outlet.given[0].properties.at("popover_opens"), "1-5");
    EXPECT_EQ(outlet.given[0].properties.at("primary_source"), "cli");
    EXPECT_EQ(outlet.given[0].properties.at("account_count_bucket"), "2");
    EXPECT_EQ(outlet.given[0].properties.at("version"), "1.0.0");
}

TEST_F(LiveTelemetryRecorderTest, theDayIsMarkedAndThePeriodBegunBeforeAnythingIsSent)
{
    recorder.notePopoverOpened();
    clock.advance(std::chrono::hours(1));
    ASSERT_TRUE(recorder.beginSpineIfDue(clock.now()));
    EXPECT_EQ(onDisk().lastEmittedDay, "2026-03-01");
    EXPECT_EQ(onDisk().countersSince, clock.now());
    EXPECT_EQ(onDisk().counters, TelemetryCounters());
    EXPECT_TRUE(outlet.given.empty());
    // The program that ended here has told its day.
    TelemetryStore restarted(files, clock, path, runAtOnce);
    LiveTelemetryRecorder next(restarted, telemetry);
    EXPECT_FALSE(next.beginSpineIfDue(clock.now()));
}

TEST_F(LiveTelemetryRecorderTest, theDailyEventIsDueOncePerDayOfUtc)
{
    clock.jumpTo(test::instant("2026-03-01T23:59:59.999Z"));
    EXPECT_TRUE(recorder.beginSpineIfDue(clock.now()));
    EXPECT_FALSE(recorder.beginSpineIfDue(clock.now()));
    clock.jumpTo(test::instant("2026-03-02T00:00:00Z"));
    EXPECT_TRUE(recorder.beginSpineIfDue(clock.now()));
    EXPECT_FALSE(recorder.beginSpineIfDue(clock.now()));
}

TEST_F(LiveTelemetryRecorderTest, theDailyEventNeedsTheUsersLeaveAndNothingIsForgottenWithoutIt)
{
    recorder.notePopoverOpened();
    store.update([](TelemetryConfig& config) { config.productAnalyticsEnabled = false; });
    const TelemetryConfig before = store.current();
    EXPECT_FALSE(recorder.beginSpineIfDue(clock.now()));
    EXPECT_EQ(store.current(), before);
}

TEST_F(LiveTelemetryRecorderTest, leaveThatIsTakenBackBetweenTheStepsHolds)
{
    const auto kept = recorder.beginSpineIfDue(clock.now());
    store.update([](TelemetryConfig& config) { config.productAnalyticsEnabled = false; });
    recorder.finishSpine(kept.value(), {}, clock.now());
    EXPECT_TRUE(outlet.given.empty());
}

} // namespace
} // namespace vellumor::liveTelemetryRecorderTest
