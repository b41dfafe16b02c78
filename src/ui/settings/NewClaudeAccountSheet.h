#pragma once

#include "app/state/AppState.h"
#include "ui/settings/SettingsActions.h"
#include "ui/settings/Sheet.h"

class QLineEdit;

namespace vellumor {

// Tells how to sign in to one more account with Claude Code.
class NewClaudeAccountSheet final : public Sheet {
    Q_OBJECT

public:
    // What is borrowed outlives it.
    NewClaudeAccountSheet(AppState& appState, const SettingsActions& actions, QWidget* parent);

private:
    void makeButtons(const SettingsActions& actions);
    void update();

    AppState& m_appState;
    QLineEdit* m_label;
    PlainText* m_directory;
    QLineEdit* m_command;
    PlainText* m_removed;
};

} // namespace vellumor
