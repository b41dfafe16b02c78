#include "ui/settings/GeneralTab.h"

#include "async/OrEnd.h"
#include "base/PlatformWords.h"
#include "ui/LinkButton.h"
#include "ui/PlainText.h"
#include "ui/settings/SettingsForm.h"
#include "ui/settings/SettingsMetrics.h"
#include "ui/settings/ShowChecked.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>

namespace vellumor {

namespace {

constexpr const char* startLabel = "Start";
constexpr const char* updatesLabel = "Updates";
constexpr const char* dataLabel = "Data";

} // namespace

GeneralTab::GeneralTab(AppState& appState, GeneralModel& general, const SettingsActions& actions)
    : SettingsPage(appState)
    , m_general(general)
{
    SettingsForm form(this, {startLabel, updatesLabel, dataLabel});
    m_login = form.toggle(startLabel, "Launch Vellumor at login", "");
    m_loginError = form.note();
    form.section();
    makeUpdates(form, actions);
    form.section();
    makeRemoval(form);
    form.end();
    connect(m_login, &QCheckBox::toggled, this, [this](bool on) {
        [[maybe_unused]] const Task<> running = orEnd(m_general.setLaunchAtLogin(on));
    });
    m_general.observe([self = QPointer<GeneralTab>(this)] {
        if (self && self->isVisible())
            self->refresh();
    });
}

void GeneralTab::makeUpdates(SettingsForm& form, const SettingsActions& actions)
{
    m_autoUpdates = form.toggle(updatesLabel, "Check for updates automatically", "");
    auto* const line = new QHBoxLayout;
    m_check = new QPushButton(QStringLiteral("Check for Updates…"), this);
    m_download = new LinkButton(this);
    m_download->setText(QStringLiteral("Download"));
    line->addWidget(m_check);
    line->addWidget(m_download);
    line->addStretch(1);
    form.add("", line, 0);
    m_updateNote = form.note();
    connect(m_autoUpdates, &QCheckBox::toggled, this,
            [this](bool on) { m_general.setAutoUpdates(on); });
    connect(m_check, &QPushButton::clicked, this,
            [this] { [[maybe_unused]] const Task<> running = orEnd(m_general.checkForUpdates()); });
    connect(m_download, &QAbstractButton::clicked, this,
            [this, open = actions.openPage] { open(m_general.content().updatePage.c_str()); });
}

void GeneralTab::makeRemoval(SettingsForm& form)
{
    m_remove = new QPushButton(QStringLiteral("Delete All Data…"), this);
    form.add(dataLabel, m_remove);
    m_remove->setAccessibleName(m_remove->text());
    form.note(PlatformWords::deleteAllDataHelp);
    m_removalError = form.note();
    connect(m_remove, &QPushButton::clicked, this, &GeneralTab::askForRemoval);
}

void GeneralTab::askForRemoval()
{
    auto* const box = new QMessageBox(this);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowModality(Qt::WindowModal);
    box->setIcon(QMessageBox::Warning);
    box->setWindowTitle(QString::fromUtf8(GeneralContent::removalTitle));
    box->setTextFormat(Qt::PlainText);
    box->setText(QString::fromUtf8(GeneralContent::removalTitle));
    box->setInformativeText(QString::fromUtf8(GeneralContent::removalText));
    auto* const remove =
        box->addButton(QStringLiteral("Delete and Quit"), QMessageBox::DestructiveRole);
    box->setDefaultButton(box->addButton(QStringLiteral("Cancel"), QMessageBox::RejectRole));
    connect(remove, &QAbstractButton::clicked, this,
            [this] { [[maybe_unused]] const Task<> running = orEnd(m_general.removeAllData()); });
    box->open();
}

void GeneralTab::showEvent(QShowEvent* event)
{
    SettingsPage::showEvent(event);
    [[maybe_unused]] const Task<> running = orEnd(m_general.load());
}

void GeneralTab::refresh()
{
    const GeneralContent content = m_general.content();
    const auto show = [](PlainText& line, const std::string& text) {
        line.setPlainText(text);
        line.fixWidth(line.width());
        line.setVisible(!text.empty());
    };
    showChecked(*m_login, content.launchAtLogin.value_or(false));
    m_login->setEnabled(content.launchAtLogin.has_value());
    show(*m_loginError, content.loginError);
    showChecked(*m_autoUpdates, content.autoUpdates);
    m_autoUpdates->setEnabled(content.hasUpdates);
    m_check->setEnabled(content.hasUpdates && !content.isChecking);
    show(*m_updateNote, content.updateNote);
    m_download->setVisible(!content.updatePage.empty());
    m_remove->setEnabled(!content.isRemoving);
    show(*m_removalError, content.removalError);
}

} // namespace vellumor
