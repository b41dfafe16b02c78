#include "Fuzz.h"

#include "history/UsageHistoryStore.h"

#include <cmath>

using namespace vellumor;
using fuzz::require;

namespace {

// As a file keeps them.
UsageSamples inMilliseconds(UsageSamples samples)
{
    for (UsageSample& sample : samples)
        sample.at = std::chrono::floor<std::chrono::milliseconds>(sample.at);
    return samples;
}

} // namespace

// A history file: what can be read can be written, and reads back the same.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    const auto samples = decodeSamples(std::string(fuzz::textOf(bytes, size)));
    if (!samples)
        return 0;
    for (const UsageSample& sample : *samples) {
        const std::string* last = nullptr;
        for (const auto& [kind, percent] : sample.percents) {
            require(std::isfinite(percent));
            require(last == nullptr || *last < kind);
            last = &kind;
        }
    }
    const auto written = encodeSamples(*samples);
    require(written.has_value());
    require(decodeSamples(*written) == inMilliseconds(*samples));
    const auto trimmed = UsageHistoryStore::trim(*samples, fuzz::now, UsageHistoryStore::retention);
    require(trimmed.size() <= samples->size());
    require(UsageHistoryStore::trim(trimmed, fuzz::now, UsageHistoryStore::retention) == trimmed);
    return 0;
}
