#pragma once

#include "app/state/AppState.h"
#include "ui/settings/SettingsActions.h"
#include "ui/settings/Sheet.h"

class QLineEdit;

namespace vellumor {

// Adds an account whose folder the scan does not find, or brings a removed one back.
class ManualAddSheet final : public Sheet {
    Q_OBJECT

public:
    // What is borrowed outlives it.
    ManualAddSheet(AppState& appState, const SettingsActions& actions, QWidget* parent);

private:
    void update();
    void confirm();
    [[nodiscard]] Task<> add(std::string directory, std::string service);

    AppState& m_appState;
    QLineEdit* m_directory;
    QLineEdit* m_service;
    PlainText* m_objection;
    QPushButton* m_confirm;
};

} // namespace vellumor
