#include "Ratio.h"

#include "telemetry/TelemetryScrubber.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <memory>

namespace vellumor::bench {

namespace {

constexpr std::size_t large = 1'000'000;
constexpr std::size_t small = large / 10;

std::string repeated(std::string_view piece, std::size_t size)
{
    std::string text;
    while (text.size() < size)
        text += piece;
    text.resize(size);
    return text;
}

// Ten times the text beside the text: what is linear takes ten times as long. No test of the
// scrubber may end before the end of the text.
Comparison growthOf(const std::string& name, std::string_view piece)
{
    const auto longText = std::make_shared<std::string>(repeated(piece, large));
    const auto shortText = std::make_shared<std::string>(repeated(piece, small));
    if (TelemetryScrubber::mustDrop(*longText))
        std::abort();
    Comparison comparison{
        name,
        [=] { benchmark::DoNotOptimize(TelemetryScrubber::mustDrop(*longText)); },
        [=] { benchmark::DoNotOptimize(TelemetryScrubber::mustDrop(*shortText)); },
        15,
        1,
        13};
    comparison.isCpuTime = true;
    return comparison;
}

} // namespace

std::vector<Comparison> scrubber()
{
    return {growthOf("scrubbing 1 MB beside 100 kB, words", "some words of a text. "),
            growthOf("scrubbing 1 MB beside 100 kB, @", "a@b@"),
            growthOf("scrubbing 1 MB beside 100 kB, one word", "\xc3\xa4"),
            growthOf("scrubbing 1 MB beside 100 kB, near hits",
                     "a@.b /Users home/ 0123456789abcdef0123456789abcde ")};
}

} // namespace vellumor::bench
