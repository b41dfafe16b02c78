#include "Fuzz.h"

#include "store/OnboardingStore.h"
#include "store/Preferences.h"

using namespace vellumor;
using fuzz::require;

namespace {

void checkBounds(const Preferences& held)
{
    require(held.userInterval >= 60.0 && held.userInterval <= 1800.0);
    require(held.sessionClosingLeadMinutes >= 5 && held.sessionClosingLeadMinutes <= 120);
    for (const auto& [id, percent] : held.customThresholds) {
        require(percent >= 1.0 && percent <= 99.0);
        require(held.customThreshold(id) == percent);
    }
}

} // namespace

// The settings, and the state of the first-run flow.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    const std::string_view text = fuzz::textOf(bytes, size);
    if (const auto preferences = Preferences::decode(text)) {
        require(preferences->schemaVersion < 2);
        const Preferences held = preferences->clamped();
        checkBounds(held);
        require(held.clamped() == held);
        const auto written = preferences->encode();
        require(written.has_value());
        require(Preferences::decode(*written) == preferences);
    }
    if (const auto state = OnboardingState::decode(text)) {
        require(state->schemaVersion < 2);
        require(OnboardingState::decode(state->encode().value()) == state);
    }
    return 0;
}
