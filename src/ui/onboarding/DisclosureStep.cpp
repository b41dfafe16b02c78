#include "ui/onboarding/DisclosureStep.h"

#include "ui/PlainText.h"
#include "ui/PopoverMetrics.h"
#include "ui/model/settings/OnboardingContent.h"
#include "ui/model/settings/UsageContent.h"
#include "ui/onboarding/OnboardingMetrics.h"
#include "ui/settings/SettingsForm.h"
#include "ui/settings/SettingsMetrics.h"
#include "ui/settings/ShowChecked.h"

#include <QCheckBox>
#include <QPointer>
#include <QStyle>
#include <QVBoxLayout>

namespace vellumor {

namespace {

} // namespace

DisclosureStep::DisclosureStep(AppState& appState, PrivacyModel& privacy)
    : SettingsPage(appState)
    , m_privacy(privacy)
    , m_column(new QVBoxLayout(this))
{
    m_column->setContentsMargins(0, 0, 0, 0);
    m_column->setSpacing(SettingsMetrics::step + 2);
    addHeading("What Vellumor reads & sends", true);
    addHeading("What Vellumor reads", false);
    addText(PlatformWords::whatIsRead);
    addText(OnboardingContent::unofficialText);
    m_localOnly = addToggle("Use local cache only", UsageContent::localCacheOnlyHelp);
    addHeading("What Vellumor sends", false);
    addText(OnboardingContent::sendsText);
    addText(std::string("It ") + PlatformWords::telemetryNeverIncludes);
    m_diagnostics = addToggle(PrivacyModel::diagnosticsTitle, PrivacyModel::diagnosticsHelp);
    m_analytics = addToggle(PrivacyModel::analyticsTitle, PrivacyModel::analyticsHelp);
    m_column->addStretch(1);
    connect(m_localOnly, &QCheckBox::toggled, this, &DisclosureStep::setLocalOnly);
    connect(m_diagnostics, &QCheckBox::toggled, this,
            [this](bool on) { m_privacy.setDiagnosticsEnabled(on); });
    connect(m_analytics, &QCheckBox::toggled, this,
            [this](bool on) { m_privacy.setProductAnalyticsEnabled(on); });
    m_privacy.observe([self = QPointer<DisclosureStep>(this)] {
        if (self && self->isVisible())
            self->refresh();
    });
}

void DisclosureStep::addHeading(const char* text, bool isLarge)
{
    auto* const heading = new PlainText(this, 2);
    QFont bold = isLarge ? PopoverMetrics::of(font()).name : font();
    bold.setWeight(QFont::DemiBold);
    heading->setFont(bold);
    heading->setPlainText(text);
    if (!isLarge)
        m_column->addSpacing(SettingsMetrics::step);
    m_column->addWidget(heading);
}

void DisclosureStep::addText(const std::string& text)
{
    auto* const line = new PlainText(this, PlainText::pageLines);
    line->setPlainText(text);
    line->fixWidth(onboardingWidth(font()));
    m_column->addWidget(line);
}

QCheckBox* DisclosureStep::addToggle(const char* title, const char* help)
{
    auto* const box = new QCheckBox(buttonText(title), this);
    box->setAccessibleName(QString::fromUtf8(title));
    box->setAccessibleDescription(QString::fromUtf8(help));
    m_column->addSpacing(SettingsMetrics::step);
    m_column->addWidget(box);
    const int indent = style()->pixelMetric(QStyle::PM_IndicatorWidth, nullptr, box) +
                       style()->pixelMetric(QStyle::PM_CheckBoxLabelSpacing, nullptr, box);
    auto* const line = new PlainText(this, PlainText::pageLines);
    line->setFont(SettingsMetrics::secondary(font()));
    line->setDimmed();
    line->setPlainText(help);
    line->fixWidth(onboardingWidth(font()) - indent);
    m_column->addWidget(line, 0, Qt::AlignRight);
    return box;
}

void DisclosureStep::setLocalOnly(bool on)
{
    m_appState.updatePreferences([on](Preferences& p) { p.localCacheOnly = on; });
    if (on)
        m_privacy.noteLocalOnly();
}

void DisclosureStep::refresh()
{
    showChecked(*m_localOnly, m_appState.preferences().localCacheOnly);
    showChecked(*m_diagnostics, m_privacy.diagnosticsEnabled());
    showChecked(*m_analytics, m_privacy.productAnalyticsEnabled());
}

} // namespace vellumor
