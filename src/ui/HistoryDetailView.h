#pragma once

#include "ui/PopoverMetrics.h"
#include "ui/Theme.h"
#include "ui/model/HistoryContent.h"

#include <QWidget>

#include <functional>
#include <vector>

class QGridLayout;
class QPushButton;
class QVBoxLayout;

namespace vellumor {

class CoverageStripView;
class HistoryChartView;
class PlainText;
class SymbolButton;

// One account's last seven days, in the place of the popover's list.
class HistoryDetailView final : public QWidget {
    Q_OBJECT

public:
    struct Actions {
        std::function<void()> back;
        std::function<void(const std::string& text)> copy;
        std::function<void(const std::string& extension)> exportAs; // "csv" or "json"
    };

    // `metrics` outlives it.
    HistoryDetailView(const PopoverMetrics& metrics, Actions actions, QWidget* parent);

    void setContent(const HistoryContent& content, const Theme& theme);

private:
    struct Chart {
        PlainText* title;
        HistoryChartView* view;
        PlainText* nothingYet;
    };

    void makeHeader();
    void makeReceipt();
    void makeExports();
    [[nodiscard]] PlainText* addText(const QFont& font, int mostLines);
    void setCharts(const HistoryContent& content, const Theme& theme);
    void setFacts(const std::vector<HistoryFactRow>& facts, const Theme& theme);
    void setReceipt(const ReceiptContent& receipt, const Theme& theme);

    const PopoverMetrics& m_metrics;
    Actions m_actions;
    HistoryContent m_content;
    Theme m_theme;
    QVBoxLayout* m_column;
    SymbolButton* m_back = nullptr;
    PlainText* m_name = nullptr;
    PlainText* m_subtitle = nullptr;
    QVBoxLayout* m_chartColumn = nullptr;
    std::vector<Chart> m_charts;
    CoverageStripView* m_strip = nullptr;
    PlainText* m_coverage = nullptr;
    QGridLayout* m_factGrid = nullptr;
    std::vector<PlainText*> m_facts; // title and text in turns
    PlainText* m_receiptTitle = nullptr;
    std::vector<PlainText*> m_receiptRows;
    QVBoxLayout* m_receiptColumn = nullptr;
    QPushButton* m_copy = nullptr;
    QPushButton* m_csv = nullptr;
    QPushButton* m_json = nullptr;
};

} // namespace vellumor
