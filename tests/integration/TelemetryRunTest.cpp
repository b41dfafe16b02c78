// The real program with telemetry switched on: what it tells, to a server of the test's own.

#include "integration/ProgramWorld.h"
#include "support/LoopbackServer.h"

#include "base/Json.h"
#include "base/Sha256.h"
#include "diagnostics/crash/Reports.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

namespace vellumor::telemetryRunTest {
namespace {

using test::Answer;
using test::LoopbackServer;
using test::ProgramWorld;
using test::SeenRequest;

constexpr const char* data = ".local/share/";

// One account, of which only local readings may be used, and the sibling beside it.
struct TelemetryRunTest : testing::Test {
    ProgramWorld world;
    LoopbackServer maker{[](const SeenRequest&) { return Answer{200, {}, "{}"}; }};
    std::string config = world.home + "/" + data + "Vellumor/telemetry.json";

    TelemetryRunTest()
    {
        world.environment["QT_QPA_PLATFORM"] = "offscreen";
        world.environment["DBUS_SYSTEM_BUS_ADDRESS"] = "unix:path=/nonexistent";
        world.environment["VELLUMOR_API_BASE"] = "http://127.0.0.1:1";
        world.environment["VELLUMOR_POSTHOG_KEY"] = "phc_test";
        world.environment["VELLUMOR_POSTHOG_HOST"] = maker.url("");
        world.environment["VELLUMOR_TELEMETRY_FORCE"] = "1";
        world.signIn(".claude", "a-token");
        put("Vellumor/preferences.json", R"({"localCacheOnly":true,"notificationsEnabled":true})");
        put("Quorle/presence/ostrelline.json",
            R"({"source":"ostrelline","firstSeenAt":"2026-01-01T00:00:00.000Z"})");
    }
    void put(const std::string& name, const std::string& bytes) const
    {
        world.folder.put("home/" + std::string(data) + name, bytes);
    }
    [[nodiscard]] Json configNow() const
    {
        return parseJson(test::contentsOf(config)).value_or(Json());
    }
    // Every event that has come so far.
    [[nodiscard]] std::vector<Json> events() const
    {
        std::vector<Json> all;
        for (const SeenRequest& request : maker.requests()) {
            const Json batch = parseJson(request.body).value_or(Json());
            for (const Json& event : batch.value("batch", Json::array()))
                all.push_back(event);
        }
        return all;
    }
    [[nodiscard]] std::vector<Json> eventsOf(const std::string& name) const
    {
        auto some = events();
        std::erase_if(some, [&](const Json& event) { return event["event"] != name; });
        return some;
    }
    // Starts it and waits for the last thing of a start. What a start tells is charged before that.
    [[nodiscard]] std::unique_ptr<test::ChildProcess> startToTheEnd(const std::string& log) const
    {
        const std::string presence = std::string(data) + "Quorle/presence/vellumor.json";
        std::filesystem::remove(world.home + "/" + presence);
        auto program = world.start(log);
        EXPECT_TRUE(ProgramWorld::waitUntil([&] { return world.hasFile(presence); }));
        return program;
    }
};

// With what stands beside the properties of each event.
Json decorated(Json properties, const Json& event)
{
    const std::string os = event["properties"].value("os", "");
    EXPECT_NE(os, "");
    properties.update({{"source", "vellumor"},
                       {"version", "1.0.0"},
                       {"os", os},
                       {"environment", "dev"},
                       {"$geoip_disable", true},
                       {"$process_person_profile", false}});
    return properties;
}

TEST_F(TelemetryRunTest, theFirstBatchOfADayIsTheDailyEventWhichARestartDoesNotRepeat)
{
    {
        const auto program = startToTheEnd("first");
        ASSERT_TRUE(ProgramWorld::waitUntil([&] { return !events().empty(); }));
    }
    ASSERT_EQ(events().size(), 1U);
    const Json event = events()[0];
    EXPECT_EQ(event["event"], "day_active");
    EXPECT_EQ(event["properties"], decorated({{"install_age", "new"},
                                              {"sibling_installed", "yes"},
                                              {"account_count_bucket", "1"},
                                              {"counters_days", "1"},
                                              {"primary_source", "none"},
                                              {"failures", "0"},
                                              {"worst_category", "none"},
                                              {"dropped_events", "0"},
                                              {"popover_opens", "0"},
                                              {"notifications", "0"},
                                              {"notifications_enabled", "yes"},
                                              {"launch_at_login", "no"},
                                              {"offline_mode", "yes"},
                                              {"revive_unavailable", "no"}},
                                             event));
    const Json marked = configNow();
    EXPECT_EQ(marked["lastEmittedDay"], event["timestamp"].get<std::string>().substr(0, 10));
    EXPECT_EQ(marked["installID"], event["distinct_id"]);
    EXPECT_EQ(marked["caps"]["total"], 1);

    const auto again = startToTheEnd("second");
    EXPECT_EQ(configNow()["caps"]["total"], 1);
    EXPECT_EQ(configNow()["countersSince"], marked["countersSince"]);
    EXPECT_EQ(events().size(), 1U);
}

TEST_F(TelemetryRunTest, aCrashReportThatLiesThereAtTheStartIsToldOnce)
{
    const std::string frame = "vellumor::Poller::tick";
    put("Vellumor/DiagnosticReports/Vellumor-2026-03-01-093000.ips",
        test::reportText(test::header("one"), test::bodyWith({test::frame(frame)})));
    const auto program = startToTheEnd("log");
    ASSERT_TRUE(ProgramWorld::waitUntil(
        [&] { return !eventsOf("crash_detected").empty() && !eventsOf("day_active").empty(); }));
    ASSERT_EQ(eventsOf("crash_detected").size(), 1U);
    const Json event = eventsOf("crash_detected")[0];
    EXPECT_EQ(event["properties"], decorated({{"exception_type", "EXC_BAD_ACCESS"},
                                              {"signal", "SIGSEGV"},
                                              {"area", "poller"},
                                              {"signature", Sha256::first8Hex(frame)},
                                              {"crashed_version", "1.0.0"},
                                              {"uptime", "short"}},
                                             event));
    EXPECT_TRUE(world.hasFile(std::string(data) + "Vellumor/crash-state.json"));
}

} // namespace
} // namespace vellumor::telemetryRunTest
