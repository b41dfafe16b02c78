// Weeks of a program's life, with all that it tells.

#include "telemetry/TelemetryBuckets.h"
#include "telemetry/TelemetryTesting.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <set>

namespace vellumor::telemetryDaysTest {
namespace {

using namespace std::chrono_literals;

struct TelemetryDaysTest : testing::Test, test::TelemetryWorld {};

TEST_F(TelemetryDaysTest, aStormOfFailuresADayForAWeekTellsTenADayAndCountsTheRest)
{
    isWriting = false;
    for (int day = 0; day < 7; ++day) {
        for (int i = 0; i < 40; ++i)
            recorder.noteFailure("category_" + std::to_string(i % 20), "endpoint");
        EXPECT_EQ(outlet.given.size(), 10U * static_cast<std::size_t>(day + 1));
        EXPECT_EQ(caps().diagnostics, 10);
        EXPECT_EQ(caps().dropped, 20 * (day + 1)); // ten categories twice; the others are repeats
        clock.advance(24h);
    }
    EXPECT_EQ(store.current().counters.failures, 280); // no daily event has ended the period
}

TEST_F(TelemetryDaysTest, midnightOfUtcGivesTheCapsBackAndNoOtherMidnight)
{
    clock.jumpTo(test::instant("2026-03-01T18:29:59Z")); // a second before midnight in Kolkata
    for (int i = 0; i < 60; ++i)
        recorder.capture(TelemetryEvent::switchToLocalOnly());
    EXPECT_EQ(outlet.given.size(), 50U);
    EXPECT_EQ(caps().dropped, 10);
    clock.advance(1s);
    recorder.capture(TelemetryEvent::switchToLocalOnly());
    EXPECT_EQ(outlet.given.size(), 50U);
    clock.jumpTo(test::instant("2026-03-02T00:00:00Z"));
    recorder.capture(TelemetryEvent::switchToLocalOnly());
    EXPECT_EQ(outlet.given.size(), 51U);
    EXPECT_EQ(caps().total, 1);
    EXPECT_EQ(caps().dropped, 11);
}

TEST_F(TelemetryDaysTest, aRestartIsNoWayAroundTheCaps)
{
    for (int i = 0; i < 50; ++i)
        recorder.capture(TelemetryEvent::switchToLocalOnly());
    for (int i = 0; i < 3; ++i) {
        TelemetryStore restarted(files, clock, path, runAtOnce);
        auto again = parts();
        again.config = [&] { return restarted.current(); };
        again.charge = [&](const Telemetry::ChangeCaps& change) {
            restarted.update([&](TelemetryConfig& config) { change(config.caps); });
        };
        EXPECT_EQ(Telemetry(again).capture(TelemetryEvent::switchToLocalOnly()),
                  Telemetry::Outcome::capped);
    }
    EXPECT_EQ(outlet.given.size(), 50U);
    EXPECT_EQ(onDisk().caps.dropped, 3);
}

TEST_F(TelemetryDaysTest, anotherIdentityIsNoWayAroundTheCapsAndBeginsItsOwnPeriod)
{
    for (int i = 0; i < 50; ++i)
        recorder.capture(TelemetryEvent::switchToLocalOnly());
    store.resetIdentity();
    EXPECT_EQ(telemetry.capture(TelemetryEvent::switchToLocalOnly()), Telemetry::Outcome::capped);
    clock.advance(24h);
    recorder.capture(TelemetryEvent::switchToLocalOnly());
    EXPECT_EQ(outlet.given.back().distinctID, store.current().installID);
    EXPECT_NE(outlet.given.back().distinctID, outlet.given.front().distinctID);
}

TEST_F(TelemetryDaysTest, aPeriodOfSeveralDaysIsToldAsSuch)
{
    const std::pair<std::chrono::hours, const char*> rows[] = {
        {24h, "1"}, {24h, "1"}, {5 * 24h, "2-7"}, {8 * 24h, "8+"}, {24h, "1"}};
    for (const auto& [off, days] : rows) {
        clock.advance(off);
        recorder.noteServed("endpoint");
        const auto kept = recorder.beginSpineIfDue(clock.now());
        ASSERT_TRUE(kept);
        recorder.finishSpine(*kept, {}, clock.now());
        EXPECT_EQ(outlet.given.back().properties.at("counters_days"), days);
    }
}

TEST_F(TelemetryDaysTest, aClockThatIsSetBackTellsTheOtherDayAgainAndNothingBreaks)
{
    ASSERT_TRUE(recorder.beginSpineIfDue(clock.now()));
    clock.jumpTo(test::instant("1999-12-31T23:00:00Z"));
    const auto kept = recorder.beginSpineIfDue(clock.now());
    ASSERT_TRUE(kept);
    recorder.finishSpine(*kept, {}, clock.now());
    EXPECT_EQ(outlet.given.back().properties.at("install_age"), "new");
    EXPECT_EQ(outlet.given.back().properties.at("counters_days"), "1");
    EXPECT_EQ(caps().day, "1999-12-31");
}

TelemetryEvent anyEvent(std::mt19937& random)
{
    switch (random() % 6) {
    case 0:
        return TelemetryEvent::crossPromoClicked("sibling");
    case 1:
        return TelemetryEvent::switchToLocalOnly();
    case 2:
        return TelemetryEvent::crashDetected({{"signature", std::to_string(random() % 5)}});
    default:
        return TelemetryEvent::diagnostic("category_" + std::to_string(random() % 15), "endpoint");
    }
}

// One day of events at random; counts by itself what has left, whatever the caps say.
struct RandomDay {
    std::set<std::string> told;
    std::size_t events = 0;
    std::size_t sent = 0;
    std::size_t diagnostics = 0;
    int refused = 0;
    bool isToldTwice = false;

    void note(const TelemetryEvent& event, Telemetry::Outcome outcome)
    {
        ++events;
        if (outcome == Telemetry::Outcome::capped)
            ++refused;
        if (outcome != Telemetry::Outcome::sent)
            return;
        ++sent;
        if (event.isDiagnostics())
            ++diagnostics;
        if (event.kind() == TelemetryEvent::Kind::diagnostic &&
            !told.insert(event.properties().at("category")).second)
            isToldTwice = true;
    }
};

TEST_F(TelemetryDaysTest, whateverHappensNoDaySeesMoreThanFiftyOrTenDiagnosticsOrOneOfThemTwice)
{
    isWriting = false;
    std::mt19937 random(20260301);
    for (int i = 0; i < 30; ++i) {
        RandomDay day;
        const int droppedBefore = caps().dropped;
        outlet.given.clear();
        for (auto left = 1 + random() % 200; left > 0; --left) {
            const TelemetryEvent event = anyEvent(random);
            day.note(event, telemetry.capture(event));
        }
        EXPECT_LE(day.sent, 50U);
        EXPECT_LE(day.diagnostics, 10U);
        EXPECT_FALSE(day.isToldTwice);
        EXPECT_EQ(outlet.given.size(), day.sent);
        EXPECT_EQ(caps().total, static_cast<int>(day.sent));
        EXPECT_EQ(caps().dropped - droppedBefore, day.refused);
        clock.advance(24h);
    }
    EXPECT_GT(caps().dropped, 100); // the caps were put to the test
}

} // namespace
} // namespace vellumor::telemetryDaysTest
