#pragma once

#include "app/state/AppState.h"
#include "ui/settings/SettingsTab.h"

#include <QWidget>

#include <map>

class QStackedWidget;

namespace vellumor {

class TabBarButton;

// The window in which people change what the program keeps. Made once, and kept when closed.
class SettingsWindow final : public QWidget {
    Q_OBJECT

public:
    // `appState` outlives it.
    explicit SettingsWindow(AppState& appState);

    void select(SettingsTab tab);
    // With the focus on none of its controls.
    void bringToFront();

private:
    [[nodiscard]] QWidget* makeTab(SettingsTab tab);
    void centre();

    AppState& m_appState;
    QStackedWidget* m_pages;
    std::map<SettingsTab, TabBarButton*> m_buttons;
};

} // namespace vellumor
