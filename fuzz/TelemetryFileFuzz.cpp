#include "Fuzz.h"

#include "telemetry/TelemetrySpine.h"

#include <algorithm>

using namespace vellumor;
using fuzz::require;

namespace {

bool isOneOf(std::string_view value, std::initializer_list<std::string_view> all)
{
    return std::find(all.begin(), all.end(), value) != all.end();
}

// Whatever the file says, what is told of it is one of a few words.
void checkSpine(const TelemetryConfig& config)
{
    const TelemetryProperties told = TelemetrySpine::assemble(config, {}, fuzz::now);
    require(told.size() == 14);
    require(isOneOf(told.at("install_age"), {"new", "week", "month", "older"}));
    require(isOneOf(told.at("counters_days"), {"1", "2-7", "8+"}));
    require(isOneOf(told.at("primary_source"),
                    {"none", "endpoint", "sharedCache", "vscodeCache", "snapshot", "cli"}));
    for (const char* key : {"failures", "dropped_events", "popover_opens", "notifications"})
        require(isOneOf(told.at(key), {"0", "1-5", "6-20", "20+"}));
}

// One more than the caps allow is refused, whatever they held before.
void checkCaps(TelemetryCaps caps)
{
    const int droppedBefore = caps.dropped;
    int accepted = 0;
    for (int i = 0; i < TelemetryCaps::mostADay + 1; ++i) {
        const auto charge = caps.charge(TelemetryEvent::Kind::dayActive, {}, "2026-03-01");
        accepted += charge == TelemetryCaps::Charge::accepted ? 1 : 0;
    }
    require(accepted <= TelemetryCaps::mostADay);
    require(caps.total >= TelemetryCaps::mostADay && caps.dropped >= droppedBefore);
}

// The dates are numbers with a fraction, so the ends of time lose some of it.
bool isNear(Instant one, Instant other)
{
    return one - other < std::chrono::milliseconds(1) && other - one < std::chrono::milliseconds(1);
}

} // namespace

// The file of telemetry's own, as anybody may have left it.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    const auto config = TelemetryConfig::decode(fuzz::textOf(bytes, size), fuzz::now);
    if (!config)
        return 0;
    require(config->schemaVersion <= TelemetryConfig::currentVersion);
    require(!config->installID.empty());
    checkSpine(*config);
    checkCaps(config->caps);
    const auto written = config->encode();
    require(written.has_value());
    auto again = TelemetryConfig::decode(*written, fuzz::now);
    require(again.has_value());
    require(isNear(again->installedAt, config->installedAt));
    require(isNear(again->countersSince, config->countersSince));
    again->installedAt = config->installedAt;
    again->countersSince = config->countersSince;
    require(again == config);
    return 0;
}
