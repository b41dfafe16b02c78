#include "telemetry/sending/DailyTelemetry.h"

#include "telemetry/TelemetryTesting.h"

#include <QCoroCore>

#include <gtest/gtest.h>

#include <chrono>
#include <semaphore>
#include <thread>

namespace vellumor::dailyTelemetryTest {
namespace {

struct DailyTelemetryTest : testing::Test {
    test::TempFolder folder;
    FileStore files;
    test::FakeClock clock{test::instant("2026-03-01T09:30:00Z")};
    Worker worker;
    std::string path = folder.file("telemetry.json");
    TelemetryStore store{files, clock, path,
                         [this](std::function<void()> job) { worker.post(std::move(job)); }};
    test::FakeOutlet outlet;
    Telemetry telemetry{{[this] { return store.current(); }, outlet, "1.0.0", "debian 12",
                         [this] { return clock.now(); },
                         [this](const Telemetry::ChangeCaps& change) {
                             store.update([&](TelemetryConfig& config) { change(config.caps); });
                         }}};
    LiveTelemetryRecorder recorder{store, telemetry};
    int gathered = 0;
    std::string markOnDisk; // when the context was gathered
    DailyTelemetry daily{recorder, worker, [this] { return gather(); }};

    Task<TelemetrySpine::Context> gather()
    {
        ++gathered;
        markOnDisk = TelemetryStore::load(path, clock.now()).lastEmittedDay;
        TelemetrySpine::Context context;
        context.accountCount = 3;
        co_return context;
    }
};

TEST_F(DailyTelemetryTest, sendsTheEventWithWhatTheProgramKnows)
{
    store.noteServed("cli");
    QCoro::waitFor(daily.emitSpineIfDue(clock.now()));
    ASSERT_EQ(outlet.names(), std::vector<std::string>{"day_active"});
    EXPECT_EQ(outlet.given[0].properties.at("account_count_bucket"), "3-4");
    EXPECT_EQ(outlet.given[0].properties.at("primary_source"), "cli");
}

TEST_F(DailyTelemetryTest, theMarkIsOnTheDiskBeforeAnythingIsSent)
{
    std::binary_semaphore isSlow{0};
    worker.post([&] { isSlow.acquire(); }); // the disk takes its time
    const auto emitting = daily.emitSpineIfDue(clock.now());
    EXPECT_FALSE(emitting.isReady());
    EXPECT_EQ(gathered, 0);
    EXPECT_TRUE(outlet.given.empty());
    isSlow.release();
    QCoro::waitFor(emitting);
    EXPECT_EQ(markOnDisk, "2026-03-01");
    EXPECT_EQ(outlet.given.size(), 1U);
}

TEST_F(DailyTelemetryTest, twoThatOverlapSendOneEvent)
{
    auto first = daily.emitSpineIfDue(clock.now());
    auto second = daily.emitSpineIfDue(clock.now());
    QCoro::waitFor(first);
    QCoro::waitFor(second);
    EXPECT_EQ(outlet.given.size(), 1U);
    EXPECT_EQ(gathered, 1);
}

TEST_F(DailyTelemetryTest, whatIsNotDueGathersNothing)
{
    store.update([](TelemetryConfig& config) { config.lastEmittedDay = "2026-03-01"; });
    QCoro::waitFor(daily.emitSpineIfDue(clock.now()));
    store.update([](TelemetryConfig& config) {
        config.lastEmittedDay = "";
        config.productAnalyticsEnabled = false;
    });
    QCoro::waitFor(daily.emitSpineIfDue(clock.now()));
    EXPECT_EQ(gathered, 0);
    EXPECT_TRUE(outlet.given.empty());
}

} // namespace
} // namespace vellumor::dailyTelemetryTest
