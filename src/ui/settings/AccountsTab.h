#pragma once

#include "ui/model/settings/AccountsContent.h"
#include "ui/settings/SettingsActions.h"
#include "ui/settings/SettingsPage.h"

class QPushButton;
class QScrollArea;
class QVBoxLayout;

namespace vellumor {

class AccountRows;
class LinkButton;
class PlainText;

// The accounts: their names, places, what is shown of them, and those that were removed.
class AccountsTab final : public SettingsPage {
    Q_OBJECT

public:
    // `actions` outlives it.
    AccountsTab(AppState& appState, const SettingsActions& actions);

protected:
    void refresh() override;

private:
    [[nodiscard]] QWidget* makeHeader();
    [[nodiscard]] QWidget* makeEmpty();
    [[nodiscard]] QWidget* makeButtons();
    [[nodiscard]] QWidget* makeHidden();
    void addManually();
    void refreshHidden(const AccountsContent& content);
    void fitList();
    void orderTabs();

    const SettingsActions& m_actions;
    AccountsContent m_content;
    AccountRows* m_rows;
    QScrollArea* m_list;
    QWidget* m_empty;
    PlainText* m_emptyTitle = nullptr;
    PlainText* m_emptyText = nullptr;
    LinkButton* m_guide = nullptr;
    QPushButton* m_scan = nullptr;
    QPushButton* m_add = nullptr;
    PlainText* m_count = nullptr;
    QWidget* m_hidden;
    PlainText* m_hiddenTitle = nullptr;
    QVBoxLayout* m_hiddenRows = nullptr;
};

} // namespace vellumor
