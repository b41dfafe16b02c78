#include "Fuzz.h"

#include "telemetry/TelemetryScrubber.h"

#include <string>

using namespace vellumor;
using fuzz::require;

// Any text as the value of a property; and with something in it that must not leave, none does.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    const std::string_view text = fuzz::textOf(bytes, size);
    const auto kept = TelemetryScrubber::scrub({{"k", std::string(text)}});
    require(kept.empty() == TelemetryScrubber::mustDrop(text));
    if (!kept.empty())
        require(kept.at("k") == text);
    const std::string before(text.substr(0, size / 2));
    const std::string after(text.substr(size / 2));
    for (const char* secret :
         {"me@example.org", "/home/me", "/Users/me", "/tmp/",
          "123e4567-e89b-12d3-a456-426614174000", "ABCDEFGHIJKLMNOPQRSTUVWXYZ012345"})
        require(TelemetryScrubber::mustDrop(before + secret + after));
    return 0;
}
