#pragma once

#include "ui/PopoverMetrics.h"
#include "ui/Theme.h"
#include "ui/model/AccountSectionContent.h"

#include <QWidget>

#include <functional>
#include <vector>

class QLabel;
class QVBoxLayout;

namespace vellumor {

class PlainText;
class SymbolButton;
class UsageRow;

// One account in the popover: its header, the rows of its limits, and what else is to say.
class AccountSection final : public QWidget {
    Q_OBJECT

public:
    // `metrics` outlives it.
    AccountSection(const PopoverMetrics& metrics, QWidget* parent);

    // Touches what has changed alone.
    void setContent(const AccountSectionContent& content, const Theme& theme);

    [[nodiscard]] SymbolButton* historyButton() const { return m_history; }
    // The line that sets it apart from the section above.
    void setLineAbove(bool hasLine) { m_hasLine = hasLine; }

    std::function<void(const std::string& configDir)> onHistory;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void makeHeader();
    void makeLines();
    void setRows(const std::vector<UsageRowContent>& rows, const Theme& theme);
    void setHeader(const AccountSectionContent& content, const Theme& theme);
    void setLines(const AccountSectionContent& content, const Theme& theme);
    void setNote(const std::optional<NoteContent>& note, const Theme& theme);

    const PopoverMetrics& m_metrics;
    AccountSectionContent m_content;
    Theme m_theme;
    bool m_hasLine = false;
    QVBoxLayout* m_column;
    PlainText* m_name = nullptr;
    PlainText* m_plan = nullptr;
    SymbolButton* m_history = nullptr;
    QVBoxLayout* m_rowColumn = nullptr;
    std::vector<UsageRow*> m_rows;
    PlainText* m_substitute = nullptr;
    PlainText* m_forecast = nullptr;
    PlainText* m_credits = nullptr;
    QWidget* m_noteLine = nullptr;
    QLabel* m_noteSymbol = nullptr;
    PlainText* m_note = nullptr;
};

} // namespace vellumor
