#pragma once

#include "telemetry/TelemetryEvent.h"

#include <string>
#include <vector>

namespace vellumor {

// How much has left today, and what may leave yet.
struct TelemetryCaps {
    static constexpr int mostADay = 50;
    static constexpr int mostDiagnosticsADay = 10; // crashes among them

    enum class Charge {
        accepted,
        capped,    // over one of the limits
        duplicate, // the same diagnostic has left today
    };

    std::string day; // UTC, "2026-03-01"; "": none yet
    int total = 0;
    int diagnostics = 0;
    std::vector<std::string> seen; // "category|layer" of today's diagnostics
    int dropped = 0;               // over a limit, since ever

    bool operator==(const TelemetryCaps&) const = default;

    // Counts one event, of which `properties` would leave, or refuses it. The first one of another
    // day begins anew.
    [[nodiscard]] Charge charge(TelemetryEvent::Kind kind, const TelemetryProperties& properties,
                                const std::string& today);

private:
    [[nodiscard]] Charge chargeDiagnostics(const std::string& key);
    [[nodiscard]] Charge refuse();
};

} // namespace vellumor
