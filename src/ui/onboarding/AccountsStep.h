#pragma once

#include "ui/settings/SettingsPage.h"

class QScrollArea;

namespace vellumor {

class AccountRows;
class PlainText;

// The accounts that were found, to be tidied up.
class AccountsStep final : public SettingsPage {
    Q_OBJECT

public:
    explicit AccountsStep(AppState& appState);

protected:
    void refresh() override;

private:
    PlainText* m_found;
    AccountRows* m_rows;
    QScrollArea* m_list;
};

} // namespace vellumor
