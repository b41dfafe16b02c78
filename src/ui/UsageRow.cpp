#include "ui/UsageRow.h"

#include "ui/Accessibility.h"
#include "ui/OneLine.h"
#include "ui/UsageBar.h"

#include <QPainter>

namespace vellumor {

namespace {

constexpr int gap = 8;
constexpr int singleLine =
    static_cast<int>(Qt::AlignVCenter) | static_cast<int>(Qt::TextSingleLine);

} // namespace

UsageRow::UsageRow(const PopoverMetrics& metrics, QWidget* parent)
    : QWidget(parent)
    , m_metrics(metrics)
{
    Accessibility::setRole(*this, QAccessible::StaticText);
    setFixedSize(metrics.contentWidth(), metrics.row);
}

void UsageRow::setContent(const UsageRowContent& content, const Theme& theme)
{
    if (content == m_content && theme == m_theme)
        return;
    m_content = content;
    m_theme = theme;
    setAccessibleName(oneLine(content.spoken()));
    setAccessibleDescription(oneLine(content.tooltip));
    QString tip = oneLine(content.tooltip).toHtmlEscaped();
    const QFontMetrics metrics(m_metrics.base);
    if (metrics.horizontalAdvance(oneLine(content.title)) > m_metrics.barX - gap)
        tip.prepend(oneLine(content.title).toHtmlEscaped() + (tip.isEmpty() ? "" : "<br>"));
    setToolTip(tip.isEmpty() ? tip : QStringLiteral("<span>%1</span>").arg(tip));
    update();
}

QColor UsageRow::colour(const QColor& fresh) const
{
    return m_content.isStale ? m_theme.stale(fresh) : fresh;
}

void UsageRow::paintPercent(QPainter& painter, const QRect& place) const
{
    const bool isFull = usageLevel(m_content.percent) == UsageLevel::full;
    QFont font = m_metrics.base;
    if (isFull)
        font.setBold(true);
    painter.setFont(font);
    painter.setPen(colour(isFull ? m_theme.full : m_theme.text));
    painter.drawText(place, singleLine | Qt::AlignRight,
                     QFontMetrics(font).elidedText(oneLine(m_content.percentText), Qt::ElideRight,
                                                   place.width()));
}

void UsageRow::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const QRect title(0, 0, m_metrics.barX - gap, height());
    painter.setFont(m_metrics.base);
    painter.setPen(colour(m_theme.text));
    painter.drawText(title, singleLine | Qt::AlignLeft,
                     QFontMetrics(m_metrics.base)
                         .elidedText(oneLine(m_content.title), Qt::ElideRight, title.width()));

    const UsageBar bar{m_content.percent, m_content.isStale};
    bar.paint(painter,
              QRectF(m_metrics.barX, (height() - m_metrics.barHeight) / 2.0, m_metrics.barWidth,
                     m_metrics.barHeight),
              m_theme);

    const int barRight = m_metrics.barX + m_metrics.barWidth;
    paintPercent(painter, QRect(barRight + 4, 0, m_metrics.percentRight - barRight - 4, height()));

    const QRect reset(m_metrics.percentRight + gap, 0, width() - m_metrics.percentRight - gap,
                      height());
    painter.setFont(m_metrics.secondary);
    painter.setPen(colour(m_theme.dimmed));
    painter.drawText(reset, singleLine | Qt::AlignRight,
                     QFontMetrics(m_metrics.secondary)
                         .elidedText(oneLine(m_content.resetText), Qt::ElideRight, reset.width()));
}

} // namespace vellumor
