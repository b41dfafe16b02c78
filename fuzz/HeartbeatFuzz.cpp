#include "Fuzz.h"

#include "store/PollerHeartbeatStore.h"

#include <cmath>

using namespace vellumor;
using fuzz::require;

// The claim of another program that polls.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    const auto heartbeat = PollerHeartbeat::decode(fuzz::textOf(bytes, size));
    if (!heartbeat)
        return 0;
    require(std::isfinite(heartbeat->intervalSeconds));
    const auto written = heartbeat->encode();
    require(written.has_value());
    auto expected = *heartbeat;
    expected.updatedAt = std::chrono::floor<std::chrono::milliseconds>(heartbeat->updatedAt);
    require(PollerHeartbeat::decode(*written) == expected);
    return 0;
}
