#pragma once

#include "app/state/AppState.h"
#include "ui/model/settings/AccountsContent.h"

#include <QWidget>

#include <map>

class QFrame;
class QScrollArea;
class QVBoxLayout;

namespace vellumor {

class AccountRow;

// The accounts one below the other, to be arranged by dragging them or with the arrow keys.
class AccountRows final : public QWidget {
    Q_OBJECT

public:
    // To be scrolled in `list`, which takes it over. `appState` outlives it.
    AccountRows(AppState& appState, QScrollArea& list);

    void setContent(const std::vector<AccountRowContent>& rows);
    // Those of all rows, in the order of the Tab key.
    [[nodiscard]] std::vector<QWidget*> controls() const;

private:
    [[nodiscard]] AccountRow* makeRow(const std::string& id);
    void connectDragging(AccountRow& row, const std::string& id);
    [[nodiscard]] const Account* account(const std::string& id) const;
    [[nodiscard]] std::size_t place(const std::string& id) const;
    // In front of which row a drop at this height puts the one that is dragged.
    [[nodiscard]] std::size_t placeAt(int y) const;
    void showMark(const QPoint& globalPosition);
    void moveTo(const std::string& id, std::size_t to);
    void step(const std::string& id, int steps);

    AppState& m_appState;
    std::vector<AccountRowContent> m_content;
    std::map<std::string, AccountRow*> m_rows; // by account id
    QVBoxLayout* m_column;
    QFrame* m_mark; // where a drop would put the row
};

} // namespace vellumor
