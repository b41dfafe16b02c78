#pragma once

#include "telemetry/TelemetryRecorder.h"
#include "usage/FetchOutcome.h"

namespace vellumor {

// Tells telemetry what came of one fetch: which layer has served, or what has failed and where.
void recordOutcome(TelemetryRecorder& telemetry, const FetchOutcome& outcome);

} // namespace vellumor
