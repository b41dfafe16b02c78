#include "telemetry/TelemetryEvent.h"

#include <utility>

namespace vellumor {

TelemetryEvent::TelemetryEvent(Kind kind, TelemetryProperties properties)
    : m_kind(kind)
    , m_properties(std::move(properties))
{
}

TelemetryEvent TelemetryEvent::dayActive(TelemetryProperties spine)
{
    return TelemetryEvent(Kind::dayActive, std::move(spine));
}

TelemetryEvent TelemetryEvent::crossPromoClicked(std::string target)
{
    return TelemetryEvent(Kind::crossPromoClicked, {{"target", std::move(target)}});
}

TelemetryEvent TelemetryEvent::diagnostic(std::optional<std::string> category,
                                          std::optional<std::string> layer)
{
    TelemetryProperties properties;
    if (category)
        properties.emplace("category", *std::move(category));
    if (layer)
        properties.emplace("layer", *std::move(layer));
    return TelemetryEvent(Kind::diagnostic, std::move(properties));
}

TelemetryEvent TelemetryEvent::crashDetected(TelemetryProperties summary)
{
    return TelemetryEvent(Kind::crashDetected, std::move(summary));
}

TelemetryEvent TelemetryEvent::multiAccountReached()
{
    return TelemetryEvent(Kind::multiAccountReached);
}

TelemetryEvent TelemetryEvent::onboardingCompleted()
{
    return TelemetryEvent(Kind::onboardingCompleted);
}

TelemetryEvent TelemetryEvent::switchToLocalOnly()
{
    return TelemetryEvent(Kind::switchToLocalOnly);
}

std::string_view TelemetryEvent::name() const
{
    switch (m_kind) {
    case Kind::dayActive:
        return "day_active";
    case Kind::crossPromoClicked:
        return "cross_promo_clicked";
    case Kind::diagnostic:
        return "diagnostic";
    case Kind::crashDetected:
        return "crash_detected";
    case Kind::multiAccountReached:
        return "multi_account_reached";
    case Kind::onboardingCompleted:
        return "onboarding_completed";
    case Kind::switchToLocalOnly:
        break;
    }
    return "switch_to_local_only";
}

bool TelemetryEvent::isDiagnostics() const
{
    return m_kind == Kind::diagnostic || m_kind == Kind::crashDetected;
}

} // namespace vellumor
