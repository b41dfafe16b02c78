#include "telemetry/Telemetry.h"

#include "base/Format.h"
#include "base/Text.h"
#include "telemetry/TelemetryBuckets.h"
#include "telemetry/TelemetryScrubber.h"

#include <utility>

namespace vellumor {

namespace {

std::string onOrOff(bool isOn)
{
    return isOn ? "on" : "off";
}

} // namespace

Telemetry::Telemetry(Parts parts)
    : m_parts(std::move(parts))
{
}

Telemetry::Outcome Telemetry::capture(const TelemetryEvent& event)
{
    const TelemetryConfig config = m_parts.config();
    if (!(event.isDiagnostics() ? config.diagnosticsEnabled : config.productAnalyticsEnabled))
        return Outcome::disabled;
    if (m_parts.transport.hasKey() && !m_parts.transport.isTransmitting())
        return Outcome::disabled; // and nothing is counted
    TelemetryProperties kept = TelemetryScrubber::scrub(decorated(event), m_parts.suppressed);
    switch (charge(config, event.kind(), kept)) {
    case TelemetryCaps::Charge::duplicate:
        return Outcome::duplicate;
    case TelemetryCaps::Charge::capped:
        return Outcome::capped;
    case TelemetryCaps::Charge::accepted:
        break;
    }
    m_parts.transport.enqueue(std::string(event.name()), config.installID, std::move(kept));
    return Outcome::sent;
}

TelemetryProperties Telemetry::decorated(const TelemetryEvent& event) const
{
    TelemetryProperties properties = event.properties();
    properties["source"] = "vellumor";
    properties["version"] = m_parts.version;
    properties["os"] = m_parts.os;
    properties["environment"] = name(m_parts.transport.environment());
    return properties;
}

// With what is left of the properties: the key of a diagnostic is kept on disk, where nothing may
// stand that may not leave.
TelemetryCaps::Charge Telemetry::charge(const TelemetryConfig& config, TelemetryEvent::Kind kind,
                                        const TelemetryProperties& properties) const
{
    const std::string today = TelemetryBuckets::utcDay(m_parts.now());
    TelemetryCaps unkept = config.caps;
    if (!m_parts.charge)
        return unkept.charge(kind, properties, today);
    auto result = TelemetryCaps::Charge::capped;
    m_parts.charge([&](TelemetryCaps& caps) { result = caps.charge(kind, properties, today); });
    return result;
}

std::string Telemetry::diagnosticsLine(const TelemetryConfig& config)
{
    return "diagnostics=" + onOrOff(config.diagnosticsEnabled) +
           " analytics=" + onOrOff(config.productAnalyticsEnabled) +
           " id=" + Text::printable(config.installID) + " since " +
           Format::isoWholeSeconds(config.installedAt);
}

} // namespace vellumor
