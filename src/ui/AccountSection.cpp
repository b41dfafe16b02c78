#include "ui/AccountSection.h"

#include "ui/Accessibility.h"
#include "ui/OneLine.h"
#include "ui/PlainText.h"
#include "ui/SymbolButton.h"
#include "ui/UsageRow.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QVBoxLayout>

namespace vellumor {

namespace {

constexpr int noteSymbolPoints = 14;

void showLine(PlainText& line, const std::string& text, const QColor& colour)
{
    line.setPlainText(text);
    line.setColour(colour);
    line.setVisible(!text.empty());
}

} // namespace

AccountSection::AccountSection(const PopoverMetrics& metrics, QWidget* parent)
    : QWidget(parent)
    , m_metrics(metrics)
    , m_column(new QVBoxLayout(this))
{
    Accessibility::setRole(*this, QAccessible::Grouping);
    m_column->setContentsMargins(0, 2 * metrics.step, 0, 2 * metrics.step);
    m_column->setSpacing(metrics.step - 1);
    makeHeader();
    makeLines();
}

void AccountSection::makeHeader()
{
    auto* const header = new QHBoxLayout;
    header->setSpacing(2 * m_metrics.step);
    m_name = new PlainText(this);
    m_name->setFont(m_metrics.name);
    m_plan = new PlainText(this);
    m_plan->setFont(m_metrics.secondary);
    m_plan->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed); // the name gives way to it
    m_plan->setMaximumWidth(m_metrics.contentWidth() / 3);
    m_history = new SymbolButton(Symbols::Symbol::history, this);
    header->addWidget(m_name);
    header->addWidget(m_plan);
    header->addStretch(1);
    header->addWidget(m_history);
    m_column->addLayout(header);
    connect(m_history, &QAbstractButton::clicked, this, [this] {
        if (onHistory)
            onHistory(m_content.configDir);
    });
}

void AccountSection::makeLines()
{
    m_rowColumn = new QVBoxLayout;
    m_rowColumn->setSpacing(0);
    m_column->addLayout(m_rowColumn);
    const auto line = [this](const QFont& font) {
        auto* const text = new PlainText(this, PlainText::sentenceLines);
        text->setFont(font);
        return text;
    };
    m_substitute = line(m_metrics.base);
    m_forecast = line(m_metrics.secondary);
    m_credits = line(m_metrics.secondary);
    for (PlainText* text : {m_substitute, m_forecast, m_credits})
        m_column->addWidget(text);
    m_noteLine = new QWidget(this);
    auto* const note = new QHBoxLayout(m_noteLine);
    note->setContentsMargins(0, 0, 0, 0);
    note->setSpacing(m_metrics.step + 2);
    m_noteSymbol = new QLabel(m_noteLine);
    m_note = line(m_metrics.secondary);
    note->addWidget(m_noteSymbol, 0, Qt::AlignTop);
    note->addWidget(m_note, 1);
    m_column->addWidget(m_noteLine);
}

void AccountSection::paintEvent(QPaintEvent*)
{
    if (m_hasLine)
        QPainter(this).fillRect(0, 0, width(), 1, m_theme.hairline);
}

void AccountSection::setContent(const AccountSectionContent& content, const Theme& theme)
{
    if (content == m_content && theme == m_theme)
        return;
    setHeader(content, theme);
    setRows(content.rows, theme);
    setLines(content, theme);
    setNote(content.note, theme);
    if (theme != m_theme)
        update();
    m_content = content;
    m_theme = theme;
}

void AccountSection::setHeader(const AccountSectionContent& content, const Theme& theme)
{
    setAccessibleName(oneLine(content.name));
    m_name->setPlainText(content.name);
    m_name->setColour(theme.text);
    showLine(*m_plan, content.plan, theme.dimmed);
    m_history->setHelp(content.historyHelp);
    m_history->setColour(theme.dimmed);
}

void AccountSection::setRows(const std::vector<UsageRowContent>& rows, const Theme& theme)
{
    while (m_rows.size() > rows.size()) {
        delete m_rows.back();
        m_rows.pop_back();
        m_column->invalidate(); // only the layout within is told that a widget is gone
        updateGeometry();
    }
    while (m_rows.size() < rows.size()) {
        auto* const row = new UsageRow(m_metrics, this);
        m_rowColumn->addWidget(row);
        row->show();
        m_rows.push_back(row);
    }
    for (std::size_t i = 0; i < rows.size(); ++i)
        m_rows[i]->setContent(rows[i], theme);
}

void AccountSection::setLines(const AccountSectionContent& content, const Theme& theme)
{
    showLine(*m_substitute, content.isWaiting ? "…" : content.substitute, theme.dimmed);
    showLine(*m_forecast, content.forecast, theme.dimmed);
    showLine(*m_credits, content.credits, content.areCreditsExhausted ? theme.full : theme.dimmed);
}

void AccountSection::setNote(const std::optional<NoteContent>& note, const Theme& theme)
{
    m_noteLine->setVisible(note.has_value());
    if (!note)
        return;
    showLine(*m_note, note->text, theme.dimmed);
    m_noteSymbol->setVisible(note->isWarning);
    if (note->isWarning && (m_theme != theme || m_noteSymbol->pixmap().isNull())) {
        m_noteSymbol->setPixmap(Symbols::pixmap(Symbols::Symbol::warning, noteSymbolPoints,
                                                theme.dimmed, devicePixelRatioF()));
    }
}

} // namespace vellumor
