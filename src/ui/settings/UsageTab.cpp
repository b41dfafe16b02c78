#include "ui/settings/UsageTab.h"

#include "base/PlatformWords.h"
#include "ui/PlainText.h"
#include "ui/settings/SettingsForm.h"
#include "ui/settings/SettingsMetrics.h"
#include "ui/settings/ShowChecked.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QPointer>
#include <QPushButton>

namespace vellumor {

namespace {

constexpr const char* intervalLabel = "Refresh usage every";
constexpr const char* locationLabel = "Claude Code location";

} // namespace

UsageTab::UsageTab(AppState& appState, ChooseFile chooseFile, std::function<void()> onLocalOnly)
    : SettingsPage(appState)
    , m_chooseFile(std::move(chooseFile))
    , m_interval(new QComboBox(this))
{
    SettingsForm form(this, {intervalLabel, locationLabel});
    form.add(intervalLabel, m_interval);
    m_designed = form.note();
    m_effective = form.note();
    form.section();
    m_localOnly = form.toggle("", "Use local cache only", UsageContent::localCacheOnlyHelp);
    form.section();
    m_revival = form.toggle("", "Revive expired sign-ins automatically",
                            "When an account's sign-in expires, Vellumor runs Claude Code in the "
                            "background to sign it back in so that it can keep updating its usage "
                            "numbers.");
    form.section();
    makeClaudeLocation(form);
    form.end();
    connect(m_interval, &QComboBox::activated, this, [this](int index) {
        m_appState.setUserInterval(m_content.intervals.at(static_cast<std::size_t>(index)).seconds);
    });
    connect(m_localOnly, &QCheckBox::toggled, this,
            [this, onLocalOnly = std::move(onLocalOnly)](bool on) {
                m_appState.updatePreferences([on](Preferences& p) { p.localCacheOnly = on; });
                if (on)
                    onLocalOnly();
            });
    connect(m_revival, &QCheckBox::toggled, this, [this](bool on) {
        m_appState.updatePreferences([on](Preferences& p) { p.tokenRevivalEnabled = on; });
    });
}

void UsageTab::makeClaudeLocation(SettingsForm& form)
{
    auto* const line = new QHBoxLayout;
    m_location = new PlainText(this);
    m_location->setAccessibleDescription(QString::fromUtf8(locationLabel));
    auto* const choose = new QPushButton(QStringLiteral("Choose"), this);
    choose->setAccessibleDescription(QString::fromUtf8(locationLabel));
    m_clear = new QPushButton(QStringLiteral("Clear"), this);
    m_clear->setAccessibleDescription(QString::fromUtf8(locationLabel));
    m_location->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    line->addWidget(m_location, 1);
    line->addWidget(choose);
    line->addWidget(m_clear);
    form.add(locationLabel, line, choose->sizeHint().height());
    form.note(PlatformWords::claudeLocationHelp);
    connect(choose, &QPushButton::clicked, this, [this] {
        m_chooseFile([self = QPointer<UsageTab>(this)](const std::string& path) {
            if (self)
                self->setClaudePath(path);
        });
    });
    connect(m_clear, &QPushButton::clicked, this, [this] { setClaudePath({}); });
}

void UsageTab::setClaudePath(const std::string& path)
{
    m_appState.updatePreferences([&](Preferences& p) { p.claudeBinaryPath = path; });
}

void UsageTab::refresh()
{
    UsageContent content = UsageContent::of(m_appState);
    if (content.intervals != m_content.intervals) {
        m_interval->clear();
        for (const auto& choice : content.intervals)
            m_interval->addItem(QString::fromStdString(choice.text));
    }
    m_interval->setCurrentIndex(static_cast<int>(content.interval));
    m_designed->setPlainText(content.designedNote);
    m_designed->fixWidth(m_designed->width());
    m_effective->setPlainText(content.effectiveNote);
    m_effective->fixWidth(m_effective->width());
    showChecked(*m_localOnly, content.localCacheOnly);
    showChecked(*m_revival, content.tokenRevivalEnabled);
    m_location->setPlainText(content.claudeLocation);
    m_clear->setEnabled(content.hasClaudePath);
    m_content = std::move(content);
}

} // namespace vellumor
