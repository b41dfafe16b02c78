#include "ui/settings/PrivacyTab.h"

#include "ui/PlainText.h"
#include "ui/QuorleURL.h"
#include "ui/settings/LinkLine.h"
#include "ui/settings/SettingsForm.h"
#include "ui/settings/SettingsMetrics.h"
#include "ui/settings/ShowChecked.h"

#include <QCheckBox>
#include <QFontDatabase>
#include <QPointer>
#include <QPushButton>

namespace vellumor {

namespace {

constexpr const char* idLabel = "Anonymous analytics ID";

} // namespace

PrivacyTab::PrivacyTab(AppState& appState, PrivacyModel& privacy, const SettingsActions& actions)
    : SettingsPage(appState)
    , m_privacy(privacy)
{
    SettingsForm form(this, {idLabel});
    m_diagnostics = form.toggle("", PrivacyModel::diagnosticsTitle, PrivacyModel::diagnosticsHelp);
    form.section();
    m_analytics = form.toggle("", PrivacyModel::analyticsTitle, PrivacyModel::analyticsHelp);
    form.section();
    form.text(std::string("Telemetry of any kind ") + PlatformWords::telemetryNeverIncludes);
    form.add("",
             linkLine({{"Privacy Policy", QuorleURL::privacy},
                       {"List of Events", QuorleURL::transparency}},
                      actions, this),
             0);
    form.section();
    m_id = new PlainText(this);
    m_id->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    form.add(idLabel, m_id);
    form.note(PrivacyModel::idHelp);
    auto* const reset = new QPushButton(QStringLiteral("Reset analytics ID"), this);
    form.add("", reset);
    form.end();
    connect(m_diagnostics, &QCheckBox::toggled, this,
            [this](bool on) { m_privacy.setDiagnosticsEnabled(on); });
    connect(m_analytics, &QCheckBox::toggled, this,
            [this](bool on) { m_privacy.setProductAnalyticsEnabled(on); });
    connect(reset, &QPushButton::clicked, this, [this] { m_privacy.resetAnalyticsID(); });
    m_privacy.observe([self = QPointer<PrivacyTab>(this)] {
        if (self && self->isVisible())
            self->refresh();
    });
}

void PrivacyTab::refresh()
{
    showChecked(*m_diagnostics, m_privacy.diagnosticsEnabled());
    showChecked(*m_analytics, m_privacy.productAnalyticsEnabled());
    m_id->setPlainText(m_privacy.installID());
}

} // namespace vellumor
