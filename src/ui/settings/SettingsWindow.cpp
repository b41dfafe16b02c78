#include "ui/settings/SettingsWindow.h"
#include "ui/CentredWindow.h"

#include "ui/settings/AboutTab.h"
#include "ui/settings/AccountsTab.h"
#include "ui/settings/GeneralTab.h"
#include "ui/settings/MenuBarTab.h"
#include "ui/settings/NotificationsTab.h"
#include "ui/settings/PrivacyTab.h"
#include "ui/settings/SettingsMetrics.h"
#include "ui/settings/ShowChecked.h"
#include "ui/settings/TabBarButton.h"
#include "ui/settings/UsageTab.h"

#include <QButtonGroup>
#include <QHBoxLayout>
#include <QIcon>
#include <QVBoxLayout>

namespace vellumor {

using SettingsMetrics::margin;

SettingsWindow::SettingsWindow(Parts parts)
    : QWidget(nullptr, Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                           Qt::WindowCloseButtonHint | Qt::WindowMinimizeButtonHint)
    , m_parts(std::move(parts))
{
    setWindowTitle(QStringLiteral("Vellumor Settings"));
    setWindowIcon(QIcon::fromTheme(QStringLiteral("dev.quorle.vellumor"),
                                   QIcon(QStringLiteral(":/icons/dev.quorle.vellumor.svg"))));
    setFocusPolicy(Qt::ClickFocus); // so that no control has to take the focus
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(margin, margin / 2, margin, margin);
    column->setSpacing(margin);
    column->setSizeConstraint(QLayout::SetFixedSize);
    auto* const head = new QHBoxLayout;
    auto* const group = new QButtonGroup(this); // apart from the pages' own buttons
    head->setSpacing(4);
    head->addStretch(1);
    for (const SettingsTab tab : allSettingsTabs) {
        auto* const button = new TabBarButton(tab, this);
        connect(button, &QAbstractButton::toggled, this, [this, tab](bool isOn) {
            if (isOn)
                select(tab);
        });
        head->addWidget(button);
        group->addButton(button);
        QWidget* const page = makeTab(tab);
        page->setParent(this);
        page->setFixedWidth(SettingsMetrics::contentWidth(font()));
        m_tabs[tab] = {button, page};
    }
    head->addStretch(1);
    column->addLayout(head);
    for (const auto& [tab, made] : m_tabs)
        column->addWidget(made.page);
    select(allSettingsTabs.front());
    centreOnScreen(*this);
}

QWidget* SettingsWindow::makeTab(SettingsTab tab)
{
    switch (tab) {
    case SettingsTab::accounts:
        return new AccountsTab(m_parts.appState, m_parts.actions);
    case SettingsTab::usage:
        return new UsageTab(m_parts.appState, m_parts.actions.chooseFile,
                            [this] { m_parts.privacy.noteLocalOnly(); });
    case SettingsTab::menuBar:
        return new MenuBarTab(m_parts.appState);
    case SettingsTab::notifications:
        return new NotificationsTab(m_parts.appState, m_parts.notifications);
    case SettingsTab::privacy:
        return new PrivacyTab(m_parts.appState, m_parts.privacy, m_parts.actions);
    case SettingsTab::general:
        return new GeneralTab(m_parts.appState, m_parts.general, m_parts.actions);
    case SettingsTab::about:
        return new AboutTab(m_parts.appState, m_parts.about, m_parts.privacy, m_parts.actions);
    }
    return nullptr;
}

// The window is as high as the page that is shown.
void SettingsWindow::select(SettingsTab tab)
{
    showChecked(*m_tabs.at(tab).button, true);
    for (const auto& [each, parts] : m_tabs)
        parts.page->setVisible(each == tab);
}

void SettingsWindow::bringToFront()
{
    setWindowState(windowState() & ~Qt::WindowMinimized);
    show();
    raise();
    activateWindow();
    setFocus(Qt::OtherFocusReason);
}

} // namespace vellumor
