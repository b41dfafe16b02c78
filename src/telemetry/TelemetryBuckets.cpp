#include "telemetry/TelemetryBuckets.h"

#include "base/Format.h"

namespace vellumor::TelemetryBuckets {

std::string utcDay(Instant instant)
{
    return Format::isoWholeSeconds(instant).substr(0, 10);
}

} // namespace vellumor::TelemetryBuckets
