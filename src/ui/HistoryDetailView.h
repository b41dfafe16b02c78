#pragma once

#include "ui/PopoverMetrics.h"
#include "ui/Theme.h"
#include "ui/model/HistoryContent.h"

#include <QWidget>

#include <functional>
#include <vector>

class QGridLayout;
class QVBoxLayout;

namespace vellumor {

class CoverageStripView;
class HistoryChartView;
class PlainText;
class SymbolButton;
class TextButton;

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

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    struct Chart {
        QWidget* box; // around all of it
        PlainText* title;
        HistoryChartView* view;
        PlainText* nothingYet;
    };
    // Rows of a title and a text.
    struct Facts {
        QGridLayout* grid = nullptr;
        std::vector<PlainText*> texts = {}; // title and text in turns
    };

    void makeHeader();
    void makeWatched();
    void makeReceipt();
    void makeExports();
    [[nodiscard]] PlainText* addText(const QFont& font, int mostLines);
    [[nodiscard]] TextButton* makeButton(const char* label, std::function<void()> then);
    [[nodiscard]] Chart makeChart();
    [[nodiscard]] Facts makeFacts();
    void setCharts(const HistoryContent& content, const Theme& theme);
    void setFacts(Facts& facts, const std::vector<HistoryFactRow>& rows, const Theme& theme);
    void setReceipt(const ReceiptContent& receipt, const Theme& theme);
    void alignFacts(const HistoryContent& content);

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
    Facts m_facts;
    PlainText* m_receiptTitle = nullptr;
    PlainText* m_noReceipt = nullptr; // in the place of everything about one
    PlainText* m_receiptCoverage = nullptr;
    Facts m_receiptFacts;
    PlainText* m_comparison = nullptr;
    TextButton* m_copy = nullptr;
    QWidget* m_exports = nullptr;
    TextButton* m_csv = nullptr;
    TextButton* m_json = nullptr;
};

} // namespace vellumor
