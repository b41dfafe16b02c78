#pragma once

#include "ui/model/MenuBarLabel.h"
#include "ui/settings/SettingsPage.h"

#include <map>

class QRadioButton;

namespace vellumor {

// What the panel shows of each account: one of four choices.
class MenuBarTab final : public SettingsPage {
    Q_OBJECT

public:
    // `appState` outlives it.
    explicit MenuBarTab(AppState& appState);

protected:
    void refresh() override;

private:
    void choose(MenuBarLabel::MenuBarDisplayChoice choice);

    std::map<MenuBarLabel::MenuBarDisplayChoice, QRadioButton*> m_buttons;
};

} // namespace vellumor
