#pragma once

#include "base/Instant.h"
#include "telemetry/TelemetryConfig.h"
#include "telemetry/TelemetryEvent.h"
#include "telemetry/TelemetryOutlet.h"
#include "usage/model/SuppressedKinds.h"

#include <functional>
#include <string>

namespace vellumor {

// Takes every event that the program tells, decides whether it may leave, and hands what may to the
// transport. Main thread only.
class Telemetry {
public:
    enum class Outcome {
        sent,     // handed to the transport
        disabled, // by the user, or because this build sends nothing
        capped,
        duplicate, // the same diagnostic has gone today
    };
    using ChangeCaps = std::function<void(TelemetryCaps&)>;

    struct Parts {
        std::function<TelemetryConfig()> config;
        TelemetryOutlet& transport; // outlives this
        std::string version;        // of the program
        std::string os;             // "debian 12"
        std::function<Instant()> now;
        // Applies a change to the caps that are kept. Without it they are looked at, and stay.
        std::function<void(const ChangeCaps&)> charge;
        SuppressedKinds::Digests suppressed = SharedLists::suppressedKindHashes;
    };

    explicit Telemetry(Parts parts);

    Outcome capture(const TelemetryEvent& event);

    // What the report tells of a config: the switches, the identity, and since when.
    [[nodiscard]] static std::string diagnosticsLine(const TelemetryConfig& config);
    [[nodiscard]] std::string diagnosticsLine() const { return diagnosticsLine(m_parts.config()); }

private:
    [[nodiscard]] TelemetryProperties decorated(const TelemetryEvent& event) const;
    [[nodiscard]] TelemetryCaps::Charge charge(const TelemetryConfig& config,
                                               TelemetryEvent::Kind kind,
                                               const TelemetryProperties& properties) const;

    Parts m_parts;
};

} // namespace vellumor
