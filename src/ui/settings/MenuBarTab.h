#pragma once

#include "app/state/AppState.h"
#include "ui/model/MenuBarLabel.h"

#include <QWidget>

#include <map>

class QRadioButton;

namespace vellumor {

// What the panel shows of each account: one of four choices.
class MenuBarTab final : public QWidget {
    Q_OBJECT

public:
    // `appState` outlives it.
    explicit MenuBarTab(AppState& appState);

private:
    void choose(MenuBarLabel::MenuBarDisplayChoice choice);
    void update();

    AppState& m_appState;
    std::map<MenuBarLabel::MenuBarDisplayChoice, QRadioButton*> m_buttons;
};

} // namespace vellumor
