#pragma once

#include "app/state/AppState.h"
#include "platform/Notifications.h"
#include "ui/model/settings/AboutModel.h"
#include "ui/model/settings/GeneralModel.h"
#include "ui/model/settings/PrivacyModel.h"
#include "ui/settings/SettingsActions.h"
#include "ui/settings/SettingsTab.h"

#include <QWidget>

#include <map>

namespace vellumor {

class TabBarButton;

// The window in which people change what the program keeps. Made once, and kept when closed.
class SettingsWindow final : public QWidget {
    Q_OBJECT

public:
    struct Parts {
        AppState& appState;
        Notifications& notifications;
        PrivacyModel& privacy;
        GeneralModel& general;
        AboutModel& about;
        SettingsActions actions;
    };

    // What is borrowed outlives it.
    explicit SettingsWindow(Parts parts);

    void select(SettingsTab tab);
    // With the focus on none of its controls.
    void bringToFront();

private:
    [[nodiscard]] QWidget* makeTab(SettingsTab tab);

    Parts m_parts;
    struct Tab {
        TabBarButton* button;
        QWidget* page;
    };
    std::map<SettingsTab, Tab> m_tabs;
};

} // namespace vellumor
