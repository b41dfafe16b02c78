#include "ui/onboarding/OnboardingMetrics.h"

#include "ui/settings/SettingsMetrics.h"

namespace vellumor {

int onboardingWidth(const QFont& font)
{
    constexpr double beside = 440.0 / 560.0; // the settings' content
    return qRound(SettingsMetrics::contentWidth(font) * beside);
}

} // namespace vellumor
