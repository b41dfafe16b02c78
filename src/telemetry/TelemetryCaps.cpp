#include "telemetry/TelemetryCaps.h"

#include "telemetry/TelemetryCounters.h"

#include <algorithm>

namespace vellumor {

namespace {

using Kind = TelemetryEvent::Kind;

std::string valueOf(const TelemetryProperties& properties, std::string_view key)
{
    const auto found = properties.find(key);
    return found == properties.end() ? "?" : found->second;
}

// What tells one diagnostic from another; empty for an event that may come again.
std::string keyOf(Kind kind, const TelemetryProperties& properties)
{
    if (kind != Kind::diagnostic)
        return {};
    return valueOf(properties, "category") + "|" + valueOf(properties, "layer");
}

} // namespace

TelemetryCaps::Charge TelemetryCaps::charge(Kind kind, const TelemetryProperties& properties,
                                            const std::string& today)
{
    if (day != today) {
        const int everDropped = dropped;
        *this = {};
        day = today;
        dropped = everDropped;
    }
    if (total >= mostADay)
        return refuse();
    if (kind == Kind::diagnostic || kind == Kind::crashDetected)
        return chargeDiagnostics(keyOf(kind, properties));
    ++total;
    return Charge::accepted;
}

TelemetryCaps::Charge TelemetryCaps::chargeDiagnostics(const std::string& key)
{
    if (!key.empty() && std::find(seen.begin(), seen.end(), key) != seen.end())
        return Charge::duplicate;
    if (diagnostics >= mostDiagnosticsADay)
        return refuse();
    if (!key.empty())
        seen.push_back(key);
    ++diagnostics;
    ++total;
    return Charge::accepted;
}

TelemetryCaps::Charge TelemetryCaps::refuse()
{
    addOne(dropped);
    return Charge::capped;
}

} // namespace vellumor
