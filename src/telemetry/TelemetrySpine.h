#pragma once

#include "base/Instant.h"
#include "telemetry/TelemetryConfig.h"
#include "telemetry/TelemetryEvent.h"

#include <cstddef>

// TelemetrySpine: the one daily event, in coarse buckets and never exact numbers. Pure.
namespace vellumor::TelemetrySpine {

// What the program knows beside the config.
struct Context {
    bool siblingInstalled = false;
    std::size_t accountCount = 0;
    bool notificationsEnabled = false;
    bool launchAtLogin = false;
    bool offlineMode = false; // only local readings are used
    bool operator==(const Context&) const = default;
};

// The event's properties; `config` as it stood at the end of the period that is told.
[[nodiscard]] TelemetryProperties assemble(const TelemetryConfig& config, const Context& context,
                                           Instant now);

} // namespace vellumor::TelemetrySpine
