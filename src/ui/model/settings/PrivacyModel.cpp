#include "ui/model/settings/PrivacyModel.h"

namespace vellumor {

void PrivacyModel::setDiagnosticsEnabled(bool on)
{
    m_store.update([on](TelemetryConfig& config) { config.diagnosticsEnabled = on; });
    m_notice.announce();
}

void PrivacyModel::setProductAnalyticsEnabled(bool on)
{
    m_store.update([on](TelemetryConfig& config) { config.productAnalyticsEnabled = on; });
    m_notice.announce();
}

void PrivacyModel::resetAnalyticsID()
{
    m_store.resetIdentity();
    m_notice.announce();
}

void PrivacyModel::noteLocalOnly()
{
    m_telemetry.capture(TelemetryEvent::switchToLocalOnly());
}

void PrivacyModel::noteOnboardingCompleted()
{
    m_telemetry.capture(TelemetryEvent::onboardingCompleted());
}

void PrivacyModel::noteCrossPromoClicked()
{
    m_telemetry.capture(TelemetryEvent::crossPromoClicked("ostrelline"));
}

} // namespace vellumor
