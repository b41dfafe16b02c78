#include "telemetry/TelemetrySpine.h"

#include "telemetry/TelemetryBuckets.h"

#include <array>

namespace vellumor::TelemetrySpine {

namespace {

// The layer that served most; of equals the first of these.
std::string_view primarySource(const TelemetryConfig& config)
{
    constexpr std::array<std::string_view, 5> layers = {"endpoint", "sharedCache", "vscodeCache",
                                                        "snapshot", "cli"};
    std::string_view primary = "none";
    int most = 0;
    for (const std::string_view layer : layers) {
        const auto found = config.servedBy.find(layer);
        if (found != config.servedBy.end() && found->second > most) {
            primary = layer;
            most = found->second;
        }
    }
    return primary;
}

} // namespace

TelemetryProperties assemble(const TelemetryConfig& config, const Context& context, Instant now)
{
    using namespace TelemetryBuckets;
    const TelemetryCounters& counters = config.counters;
    TelemetryProperties properties;
    properties["install_age"] = installAge(config.installedAt, now);
    properties["sibling_installed"] = yesOrNo(context.siblingInstalled);
    properties["account_count_bucket"] = accounts(context.accountCount);
    properties["counters_days"] = countingDays(config.countersSince, now);
    properties["primary_source"] = primarySource(config);
    properties["failures"] = count(counters.failures);
    properties["worst_category"] = worstCategory(config.failureCategories);
    properties["dropped_events"] = count(config.caps.dropped);
    properties["popover_opens"] = count(counters.popoverOpens);
    properties["notifications"] = count(counters.notifications);
    properties["notifications_enabled"] = yesOrNo(context.notificationsEnabled);
    properties["launch_at_login"] = yesOrNo(context.launchAtLogin);
    properties["offline_mode"] = yesOrNo(context.offlineMode);
    properties["revive_unavailable"] = yesOrNo(counters.reviveUnavailable >= 1);
    return properties;
}

} // namespace vellumor::TelemetrySpine
