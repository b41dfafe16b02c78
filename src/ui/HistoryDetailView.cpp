#include "ui/HistoryDetailView.h"

#include "ui/CoverageStripView.h"
#include "ui/HistoryChartView.h"
#include "ui/PlainText.h"
#include "ui/SymbolButton.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

namespace vellumor {

namespace {

constexpr int mostLines = 3;

void showText(PlainText& text, const std::string& words, const QColor& colour)
{
    text.setPlainText(words);
    text.setColour(colour);
    text.setVisible(!words.empty());
}

} // namespace

HistoryDetailView::HistoryDetailView(const PopoverMetrics& metrics, Actions actions,
                                     QWidget* parent)
    : QWidget(parent)
    , m_metrics(metrics)
    , m_actions(std::move(actions))
    , m_column(new QVBoxLayout(this))
{
    m_column->setContentsMargins(0, metrics.step, 0, 2 * metrics.step);
    m_column->setSpacing(metrics.step);
    makeHeader();
    m_chartColumn = new QVBoxLayout;
    m_chartColumn->setSpacing(metrics.step);
    m_column->addLayout(m_chartColumn);
    m_column->addSpacing(metrics.step);
    m_strip = new CoverageStripView(this);
    m_column->addWidget(m_strip);
    m_coverage = addText(metrics.secondary, 1);
    m_factGrid = new QGridLayout;
    m_factGrid->setHorizontalSpacing(3 * metrics.step);
    m_factGrid->setVerticalSpacing(metrics.step / 2);
    m_factGrid->setColumnStretch(1, 1);
    m_factGrid->setColumnMinimumWidth(1, metrics.contentWidth() / 2);
    m_column->addSpacing(metrics.step);
    m_column->addLayout(m_factGrid);
    makeReceipt();
    makeExports();
}

PlainText* HistoryDetailView::addText(const QFont& font, int lines)
{
    auto* const text = new PlainText(this, lines);
    text->setFont(font);
    m_column->addWidget(text);
    return text;
}

void HistoryDetailView::makeHeader()
{
    auto* const header = new QHBoxLayout;
    header->setSpacing(2 * m_metrics.step);
    m_back = new SymbolButton(Symbols::Symbol::back, this);
    m_back->setText(QStringLiteral("Back"));
    m_back->setFont(m_metrics.secondary);
    m_back->setHelp("Back to all accounts");
    m_back->setAccessibleName(m_back->text());
    connect(m_back, &QAbstractButton::clicked, this, [this] { m_actions.back(); });
    auto* const names = new QVBoxLayout;
    names->setSpacing(0);
    m_name = new PlainText(this);
    m_name->setFont(m_metrics.name);
    m_subtitle = new PlainText(this);
    m_subtitle->setFont(m_metrics.secondary);
    m_subtitle->setPlainText("History");
    names->addWidget(m_name, 0, Qt::AlignLeft);
    names->addWidget(m_subtitle, 0, Qt::AlignLeft);
    header->addWidget(m_back, 0, Qt::AlignTop);
    header->addLayout(names, 1);
    m_column->addLayout(header);
}

void HistoryDetailView::makeReceipt()
{
    m_column->addSpacing(m_metrics.step);
    m_receiptTitle = addText(m_metrics.base, mostLines);
    m_receiptColumn = new QVBoxLayout;
    m_receiptColumn->setSpacing(m_metrics.step / 2);
    m_column->addLayout(m_receiptColumn);
}

void HistoryDetailView::makeExports()
{
    auto* const row = new QHBoxLayout;
    row->setSpacing(2 * m_metrics.step);
    const auto add = [&](const char* label, std::function<void()> then) {
        auto* const button = new QPushButton(QString::fromLatin1(label), this);
        button->setFont(m_metrics.secondary);
        button->setAutoDefault(false);
        button->setFocusPolicy(Qt::TabFocus);
        connect(button, &QPushButton::clicked, this, std::move(then));
        row->addWidget(button);
        return button;
    };
    m_copy = add("Copy summary", [this] { m_actions.copy(m_content.receipt.summary); });
    m_copy->setToolTip(QStringLiteral("Copy this week's summary as text"));
    row->addStretch(1);
    m_csv = add("Export CSV", [this] { m_actions.exportAs("csv"); });
    m_json = add("Export JSON", [this] { m_actions.exportAs("json"); });
    m_column->addSpacing(m_metrics.step);
    m_column->addLayout(row);
    m_column->addStretch(1);
}

void HistoryDetailView::setContent(const HistoryContent& content, const Theme& theme)
{
    if (content == m_content && theme == m_theme)
        return;
    showText(*m_name, content.name, theme.text);
    m_subtitle->setColour(theme.dimmed);
    m_back->setColour(theme.dimmed);
    setCharts(content, theme);
    m_strip->setContent(content.strip, theme);
    showText(*m_coverage, content.coverage, theme.dimmed);
    setFacts(content.facts, theme);
    setReceipt(content.receipt, theme);
    m_content = content;
    m_theme = theme;
}

void HistoryDetailView::setCharts(const HistoryContent& content, const Theme& theme)
{
    while (m_charts.size() < content.charts.size()) {
        Chart chart{new PlainText(this), new HistoryChartView(this), new PlainText(this)};
        chart.title->setFont(m_metrics.base);
        chart.nothingYet->setFont(m_metrics.secondary);
        for (QWidget* widget :
             std::initializer_list<QWidget*>{chart.title, chart.view, chart.nothingYet})
            m_chartColumn->addWidget(widget);
        m_charts.push_back(chart);
    }
    for (std::size_t i = 0; i < m_charts.size(); ++i) {
        const bool isShown = i < content.charts.size();
        const bool hasLine = isShown && !content.charts[i].segments.empty();
        m_charts[i].title->setVisible(isShown);
        m_charts[i].view->setVisible(hasLine);
        m_charts[i].nothingYet->setVisible(isShown && !hasLine);
        if (!isShown)
            continue;
        showText(*m_charts[i].title, content.charts[i].title, theme.text);
        m_charts[i].view->setContent(content.charts[i], content.dayBoundaries, theme);
        m_charts[i].nothingYet->setPlainText("Not enough history yet — collecting");
        m_charts[i].nothingYet->setColour(theme.dimmed);
    }
}

void HistoryDetailView::setFacts(const std::vector<HistoryFactRow>& facts, const Theme& theme)
{
    while (m_facts.size() < 2 * facts.size()) {
        auto* const text = new PlainText(this, m_facts.size() % 2 == 0 ? 1 : 2);
        text->setFont(m_metrics.secondary);
        const auto index = static_cast<int>(m_facts.size());
        m_factGrid->addWidget(text, index / 2, index % 2, Qt::AlignLeft | Qt::AlignTop);
        m_facts.push_back(text);
    }
    for (std::size_t i = 0; i < m_facts.size(); ++i) {
        const bool isShown = i / 2 < facts.size();
        const HistoryFactRow row = isShown ? facts[i / 2] : HistoryFactRow();
        showText(*m_facts[i], i % 2 == 0 ? row.title : row.text,
                 i % 2 == 0 ? theme.text : theme.dimmed);
    }
}

void HistoryDetailView::setReceipt(const ReceiptContent& receipt, const Theme& theme)
{
    const bool isThere = !receipt.summary.empty();
    showText(*m_receiptTitle, receipt.title, isThere ? theme.text : theme.dimmed);
    std::vector<std::string> lines{receipt.coverage};
    lines.insert(lines.end(), receipt.rows.begin(), receipt.rows.end());
    lines.push_back(receipt.comparison);
    while (m_receiptRows.size() < lines.size()) {
        auto* const text = new PlainText(this, mostLines);
        text->setFont(m_metrics.secondary);
        m_receiptColumn->addWidget(text);
        m_receiptRows.push_back(text);
    }
    for (std::size_t i = 0; i < m_receiptRows.size(); ++i)
        showText(*m_receiptRows[i], i < lines.size() ? lines[i] : "", theme.dimmed);
    m_copy->setVisible(isThere);
}

} // namespace vellumor
