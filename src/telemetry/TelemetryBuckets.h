#pragma once

#include "base/Instant.h"

#include <string>

// TelemetryBuckets: the coarse values that stand for exact ones. Pure.
namespace vellumor::TelemetryBuckets {

// The Gregorian day in UTC: "2026-03-01".
[[nodiscard]] std::string utcDay(Instant instant);

} // namespace vellumor::TelemetryBuckets
