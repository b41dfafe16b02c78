#include "telemetry/TelemetrySpine.h"

#include "support/FakeClock.h"

#include <gtest/gtest.h>

namespace vellumor::telemetrySpineTest {
namespace {

using test::instant;

const Instant now = instant("2026-03-10T09:30:00Z");

TEST(TelemetrySpine, aNewInstallationTellsOfNothing)
{
    const TelemetryProperties expected = {
        {"install_age", "new"},     {"sibling_installed", "no"},     {"account_count_bucket", "0"},
        {"counters_days", "1"},     {"primary_source", "none"},      {"failures", "0"},
        {"worst_category", "none"}, {"dropped_events", "0"},         {"popover_opens", "0"},
        {"notifications", "0"},     {"notifications_enabled", "no"}, {"launch_at_login", "no"},
        {"offline_mode", "no"},     {"revive_unavailable", "no"}};
    EXPECT_EQ(TelemetrySpine::assemble(TelemetryConfig::fresh(now), {}, now), expected);
}

TEST(TelemetrySpine, everythingIsToldInBuckets)
{
    TelemetryConfig config = TelemetryConfig::fresh(instant("2026-02-20T00:00:00Z"));
    config.countersSince = instant("2026-03-05T00:00:00Z");
    config.counters = {21, 6, 1, 5};
    config.failureCategories = {"parse_fail", "usage_403"};
    config.servedBy = {{"cli", 3}, {"sharedCache", 7}, {"endpoint", 6}};
    config.caps.dropped = 20;
    const TelemetryProperties expected = {
        {"install_age", "month"},          {"sibling_installed", "yes"},
        {"account_count_bucket", "5+"},    {"counters_days", "2-7"},
        {"primary_source", "sharedCache"}, {"failures", "6-20"},
        {"worst_category", "usage_403"},   {"dropped_events", "6-20"},
        {"popover_opens", "20+"},          {"notifications", "1-5"},
        {"notifications_enabled", "yes"},  {"launch_at_login", "yes"},
        {"offline_mode", "yes"},           {"revive_unavailable", "yes"}};
    EXPECT_EQ(TelemetrySpine::assemble(config, {true, 6, true, true, true}, now), expected);
}

TEST(TelemetrySpine, eachSwitchIsToldByItself)
{
    using TelemetrySpine::Context;
    const std::pair<const char*, bool Context::*> rows[] = {
        {"sibling_installed", &Context::siblingInstalled},
        {"notifications_enabled", &Context::notificationsEnabled},
        {"launch_at_login", &Context::launchAtLogin},
        {"offline_mode", &Context::offlineMode}};
    for (const auto& [key, field] : rows) {
        SCOPED_TRACE(key);
        Context context;
        context.*field = true;
        auto expected = TelemetrySpine::assemble(TelemetryConfig::fresh(now), {}, now);
        expected[key] = "yes";
        EXPECT_EQ(TelemetrySpine::assemble(TelemetryConfig::fresh(now), context, now), expected);
    }
}

TEST(TelemetrySpine, ofLayersThatServedAlikeTheEarlierOneIsThePrimarySource)
{
    using Served = decltype(TelemetryConfig::servedBy);
    const std::pair<Served, const char*> rows[] = {
        {{{"endpoint", 2}, {"sharedCache", 2}}, "endpoint"},
        {{{"sharedCache", 2}, {"vscodeCache", 2}, {"cli", 2}}, "sharedCache"},
        {{{"vscodeCache", 2}, {"snapshot", 2}, {"cli", 2}}, "vscodeCache"},
        {{{"snapshot", 2}, {"cli", 2}}, "snapshot"},
        {{{"endpoint", 1}, {"cli", 2}}, "cli"},
        {{{"endpoint", 0}, {"cli", 0}}, "none"},
        {{{"elsewhere", 9}, {"cli", 1}}, "cli"},
        {{{"elsewhere", 9}}, "none"},
    };
    for (const auto& [served, primary] : rows) {
        TelemetryConfig config;
        config.servedBy = served;
        EXPECT_EQ(TelemetrySpine::assemble(config, {}, now).at("primary_source"), primary);
    }
}

TEST(TelemetrySpine, anInstallationDateAtTheEndsOfTimeIsNewOrOlder)
{
    TelemetryConfig config;
    config.installedAt = config.countersSince = instant("9999-12-31T23:59:59Z");
    EXPECT_EQ(TelemetrySpine::assemble(config, {}, now).at("install_age"), "new");
    EXPECT_EQ(TelemetrySpine::assemble(config, {}, now).at("counters_days"), "1");
    config.installedAt = config.countersSince = instant("0001-01-01T00:00:00Z");
    EXPECT_EQ(TelemetrySpine::assemble(config, {}, now).at("install_age"), "older");
    EXPECT_EQ(TelemetrySpine::assemble(config, {}, now).at("counters_days"), "8+");
}

} // namespace
} // namespace vellumor::telemetrySpineTest
