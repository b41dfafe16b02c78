#include "ui/HistoryChartView.h"

#include "ui/Accessibility.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

namespace vellumor {

namespace {

constexpr int chartHeight = 56;
constexpr double margin = 1.0; // at the top and the bottom
constexpr double limitAlpha = 0.3;
constexpr double dayAlpha = 0.12;
constexpr double hairline = 0.5;
constexpr double areaAlpha = 0.12;
constexpr double lineWidth = 2.0;
constexpr double tickLength = 5.0;

QColor faded(QColor colour, double alpha)
{
    colour.setAlphaF(static_cast<float>(alpha));
    return colour;
}

} // namespace

HistoryChartView::HistoryChartView(QWidget* parent)
    : QWidget(parent)
{
    Accessibility::setRole(*this, QAccessible::Chart);
    setAccessibleName(QStringLiteral("Seven-day history chart"));
    setFixedHeight(chartHeight);
}

void HistoryChartView::setContent(const HistoryChartContent& content,
                                  const std::vector<double>& dayBoundaries, const Theme& theme)
{
    if (content == m_content && dayBoundaries == m_days && theme == m_theme)
        return;
    m_content = content;
    m_days = dayBoundaries;
    m_theme = theme;
    setAccessibleDescription(QString::fromStdString(content.title));
    update();
}

QPointF HistoryChartView::place(const HistoryChart::Point& point) const
{
    return {point.x * width(), margin + (height() - 2 * margin) * (1 - point.y / 100)};
}

// The middle of the screen's pixel there, so that a thin line is one pixel and not two faint ones.
double HistoryChartView::onPixel(double x) const
{
    const double scale = devicePixelRatioF();
    return (std::floor(std::min(x, width() - 1 / scale) * scale) + 0.5) / scale;
}

void HistoryChartView::paintSegment(QPainter& painter, const HistoryChart::Points& points) const
{
    QPainterPath line(place(points.front()));
    for (const HistoryChart::Curve& curve : HistoryChart::curves(points))
        line.cubicTo(place(curve.c1), place(curve.c2), place(curve.p1));
    QPainterPath area = line;
    area.lineTo(place({points.back().x, 0}));
    area.lineTo(place({points.front().x, 0}));
    area.closeSubpath();
    QLinearGradient shade(0, 0, 0, height());
    shade.setColorAt(0, faded(m_theme.text, areaAlpha));
    shade.setColorAt(1, faded(m_theme.text, 0));
    painter.fillPath(area, shade);
    painter.strokePath(line, QPen(m_theme.text, lineWidth));
}

void HistoryChartView::paintTicks(QPainter& painter) const
{
    painter.setPen(QPen(m_theme.dimmed, 1, Qt::SolidLine, Qt::FlatCap));
    for (const double tick : m_content.resetTicks) {
        const double x = onPixel(tick * width());
        painter.drawLine(QPointF(x, height() - tickLength), QPointF(x, height()));
    }
}

void HistoryChartView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(faded(m_theme.dimmed, limitAlpha), hairline));
    painter.drawLine(QPointF(0, margin), QPointF(width(), margin));
    painter.setPen(QPen(faded(m_theme.dimmed, dayAlpha), hairline, Qt::SolidLine, Qt::FlatCap));
    for (const double day : m_days) {
        const double x = onPixel(day * width());
        painter.drawLine(QPointF(x, margin), QPointF(x, height() - margin));
    }
    for (const HistoryChart::Points& points : m_content.segments)
        paintSegment(painter, points);
    paintTicks(painter);
}

} // namespace vellumor
