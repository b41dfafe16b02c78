#include "ui/HistoryDetailView.h"

#include "ui/CoverageStripView.h"
#include "ui/HistoryChartView.h"
#include "ui/PlainText.h"
#include "ui/SymbolButton.h"
#include "ui/TextButton.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QPainter>
#include <QVBoxLayout>

#include <algorithm>

namespace vellumor {

namespace {

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
    makeWatched();
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
    m_name = new PlainText(this);
    m_name->setFont(m_metrics.name);
    m_subtitle = new PlainText(this);
    m_subtitle->setFont(m_metrics.secondary);
    m_subtitle->setPlainText("History");
    // So far down that the name and the button's word stand on one line.
    const QFontMetrics small(m_metrics.secondary);
    const int baseline = (m_back->sizeHint().height() - small.height()) / 2 + small.ascent();
    auto* const names = new QVBoxLayout;
    names->setContentsMargins(0, std::max(0, baseline - QFontMetrics(m_metrics.name).ascent()), 0,
                              0);
    names->setSpacing(0);
    names->addWidget(m_name, 0, Qt::AlignLeft);
    names->addWidget(m_subtitle, 0, Qt::AlignLeft);
    header->addWidget(m_back, 0, Qt::AlignTop);
    header->addLayout(names, 1);
    m_column->addLayout(header);
    m_column->addSpacing(m_metrics.step);
}

void HistoryDetailView::makeWatched()
{
    m_chartColumn = new QVBoxLayout;
    m_chartColumn->setSpacing(2 * m_metrics.step);
    m_column->addLayout(m_chartColumn);
    m_column->addSpacing(m_metrics.step);
    m_strip = new CoverageStripView(this);
    m_column->addWidget(m_strip);
    m_coverage = addText(m_metrics.secondary, 1);
    m_column->addSpacing(m_metrics.step);
    m_facts = makeFacts();
}

HistoryDetailView::Facts HistoryDetailView::makeFacts()
{
    Facts facts{new QGridLayout};
    facts.grid->setHorizontalSpacing(2 * m_metrics.step);
    facts.grid->setVerticalSpacing(m_metrics.step / 2);
    facts.grid->setColumnStretch(1, 1);
    facts.grid->setColumnMinimumWidth(1, m_metrics.contentWidth() / 2);
    m_column->addLayout(facts.grid);
    return facts;
}

// A line and as much room again stand above it, and above the exports.
void HistoryDetailView::makeReceipt()
{
    m_column->addSpacing(4 * m_metrics.step);
    m_receiptTitle = addText(m_metrics.base, 1);
    m_noReceipt = addText(m_metrics.secondary, PlainText::sentenceLines);
    m_receiptCoverage = addText(m_metrics.secondary, 1);
    m_receiptFacts = makeFacts();
    m_comparison = addText(m_metrics.secondary, PlainText::sentenceLines);
    m_copy = makeButton("Copy summary", [this] { m_actions.copy(m_content.receipt.summary); });
    m_copy->setToolTip(QStringLiteral("Copy this week's summary as text"));
    m_column->addSpacing(m_metrics.step);
    m_column->addWidget(m_copy, 0, Qt::AlignLeft);
}

void HistoryDetailView::makeExports()
{
    m_column->addSpacing(4 * m_metrics.step);
    m_exports = new QWidget(this);
    auto* const row = new QHBoxLayout(m_exports);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(2 * m_metrics.step);
    m_csv = makeButton("Export CSV", [this] { m_actions.exportAs("csv"); });
    m_json = makeButton("Export JSON", [this] { m_actions.exportAs("json"); });
    row->addWidget(m_csv);
    row->addWidget(m_json);
    row->addStretch(1);
    m_column->addWidget(m_exports);
    m_column->addStretch(1);
}

TextButton* HistoryDetailView::makeButton(const char* label, std::function<void()> then)
{
    auto* const button = new TextButton(QString::fromLatin1(label), this);
    button->setFont(m_metrics.secondary);
    connect(button, &QAbstractButton::clicked, this, std::move(then));
    return button;
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
    setFacts(m_facts, content.facts, theme);
    setReceipt(content.receipt, theme);
    alignFacts(content);
    for (TextButton* button : {m_copy, m_csv, m_json})
        button->setTheme(theme);
    m_content = content;
    m_theme = theme;
    update();
}

HistoryDetailView::Chart HistoryDetailView::makeChart()
{
    auto* const box = new QWidget(this);
    const Chart chart{box, new PlainText(box), new HistoryChartView(box), new PlainText(box)};
    chart.title->setFont(m_metrics.base);
    chart.nothingYet->setFont(m_metrics.secondary);
    auto* const column = new QVBoxLayout(box);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(m_metrics.step / 2);
    for (QWidget* widget :
         std::initializer_list<QWidget*>{chart.title, chart.view, chart.nothingYet})
        column->addWidget(widget);
    m_chartColumn->addWidget(box);
    return chart;
}

void HistoryDetailView::setCharts(const HistoryContent& content, const Theme& theme)
{
    while (m_charts.size() < content.charts.size())
        m_charts.push_back(makeChart());
    for (std::size_t i = 0; i < m_charts.size(); ++i) {
        const bool isShown = i < content.charts.size();
        m_charts[i].box->setVisible(isShown);
        if (!isShown)
            continue;
        const bool hasLine = !content.charts[i].segments.empty();
        m_charts[i].view->setVisible(hasLine);
        showText(*m_charts[i].title, content.charts[i].title, theme.text);
        m_charts[i].view->setContent(content.charts[i], content.dayBoundaries, theme);
        showText(*m_charts[i].nothingYet, hasLine ? "" : "Not enough history yet — collecting",
                 theme.dimmed);
    }
}

void HistoryDetailView::setFacts(Facts& facts, const std::vector<HistoryFactRow>& rows,
                                 const Theme& theme)
{
    while (facts.texts.size() < 2 * rows.size()) {
        const bool isTitle = facts.texts.size() % 2 == 0;
        auto* const text = new PlainText(this, isTitle ? 1 : 2);
        text->setFont(m_metrics.secondary);
        const auto index = static_cast<int>(facts.texts.size());
        facts.grid->addWidget(text, index / 2, index % 2, Qt::AlignTop);
        facts.texts.push_back(text);
    }
    for (std::size_t i = 0; i < facts.texts.size(); ++i) {
        const HistoryFactRow row = i / 2 < rows.size() ? rows[i / 2] : HistoryFactRow();
        showText(*facts.texts[i], i % 2 == 0 ? row.title : row.text,
                 i % 2 == 0 ? theme.text : theme.dimmed);
    }
}

void HistoryDetailView::setReceipt(const ReceiptContent& receipt, const Theme& theme)
{
    const bool isThere = !receipt.summary.empty();
    showText(*m_receiptTitle, isThere ? receipt.title : "", theme.text);
    showText(*m_noReceipt, isThere ? "" : receipt.title, theme.dimmed);
    showText(*m_receiptCoverage, receipt.coverage, theme.dimmed);
    setFacts(m_receiptFacts, receipt.rows, theme);
    showText(*m_comparison, receipt.comparison, theme.dimmed);
    m_copy->setVisible(isThere);
}

// The texts of both blocks begin at one place.
void HistoryDetailView::alignFacts(const HistoryContent& content)
{
    const QFontMetrics metrics(m_metrics.secondary);
    int widest = 0;
    for (const auto* rows : {&content.facts, &content.receipt.rows}) {
        for (const HistoryFactRow& row : *rows)
            widest =
                std::max(widest, metrics.horizontalAdvance(QString::fromStdString(row.title)) + 1);
    }
    const int most = m_metrics.contentWidth() / 2 - 2 * m_metrics.step;
    for (const Facts* facts : {&m_facts, &m_receiptFacts})
        facts->grid->setColumnMinimumWidth(0, std::min(widest, most));
}

void HistoryDetailView::paintEvent(QPaintEvent*)
{
    const QWidget* receipt = m_content.receipt.summary.empty() ? m_noReceipt : m_receiptTitle;
    QPainter painter(this);
    for (const QWidget* below : {receipt, static_cast<const QWidget*>(m_exports)})
        painter.fillRect(0, below->y() - 5 * m_metrics.step / 2, width(), 1, m_theme.hairline);
}

} // namespace vellumor
