#include "Fuzz.h"

#include "diagnostics/crash/CrashReportState.h"

using namespace vellumor;
using fuzz::require;

// What was told of crashes before: what can be read can be written, and takes one more.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    auto state = CrashReportState::decode(fuzz::textOf(bytes, size));
    if (!state)
        return 0;
    const auto written = state->encode();
    require(written.has_value());
    require(CrashReportState::decode(*written) == state);
    CrashDigest digest;
    digest.incidentID = "one more";
    digest.signature = "0a1b2c3d";
    state->record(digest, "2026-03-01", CrashReportState::Sent::yes);
    require(state->isConsumed(digest));
    require(state->consumedIncidents.size() <= CrashReportState::maxIncidents);
    require(state->lastReportedDay.at("0a1b2c3d") == "2026-03-01");
    return 0;
}
