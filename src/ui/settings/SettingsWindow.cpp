#include "ui/settings/SettingsWindow.h"

#include "ui/settings/AboutTab.h"
#include "ui/settings/MenuBarTab.h"
#include "ui/settings/SettingsMetrics.h"
#include "ui/settings/TabBarButton.h"

#include <QButtonGroup>
#include <QHBoxLayout>
#include <QIcon>
#include <QScreen>
#include <QStackedWidget>
#include <QVBoxLayout>

namespace vellumor {

using SettingsMetrics::margin;

SettingsWindow::SettingsWindow(AppState& appState)
    : QWidget(nullptr, Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                           Qt::WindowCloseButtonHint | Qt::WindowMinimizeButtonHint)
    , m_appState(appState)
    , m_pages(new QStackedWidget(this))
{
    setWindowTitle(QStringLiteral("Vellumor Settings"));
    setWindowIcon(QIcon::fromTheme(QStringLiteral("dev.quorle.vellumor"),
                                   QIcon(QStringLiteral(":/icons/dev.quorle.vellumor.svg"))));
    setFocusPolicy(Qt::ClickFocus); // so that no control has to take the focus
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(margin, margin / 2, margin, margin);
    column->setSpacing(margin);
    column->setSizeConstraint(QLayout::SetFixedSize);
    auto* const tabs = new QHBoxLayout;
    auto* const group = new QButtonGroup(this); // apart from the pages' own buttons
    tabs->setSpacing(4);
    tabs->addStretch(1);
    for (const SettingsTab tab : allSettingsTabs) {
        auto* const button = new TabBarButton(tab, this);
        connect(button, &QAbstractButton::clicked, this, [this, tab] { select(tab); });
        tabs->addWidget(button);
        group->addButton(button);
        m_pages->addWidget(makeTab(tab));
        m_buttons[tab] = button;
    }
    tabs->addStretch(1);
    column->addLayout(tabs);
    column->addWidget(m_pages);
    m_pages->setFixedWidth(SettingsMetrics::contentWidth);
    select(allSettingsTabs.front());
    centre();
}

void SettingsWindow::centre()
{
    adjustSize();
    QRect place = frameGeometry();
    place.moveCenter(screen()->availableGeometry().center());
    move(place.topLeft());
}

QWidget* SettingsWindow::makeTab(SettingsTab tab)
{
    if (tab == SettingsTab::menuBar)
        return new MenuBarTab(m_appState);
    return makeAboutTab();
}

void SettingsWindow::select(SettingsTab tab)
{
    m_buttons.at(tab)->setChecked(true);
    for (std::size_t i = 0; i < allSettingsTabs.size(); ++i) {
        if (allSettingsTabs[i] == tab)
            m_pages->setCurrentIndex(static_cast<int>(i));
    }
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
