#include "ui/CoverageStripView.h"

#include "ui/Accessibility.h"

#include <QPainter>

#include <algorithm>

namespace vellumor {

namespace {

constexpr int stripHeight = 4;

} // namespace

CoverageStripView::CoverageStripView(QWidget* parent)
    : QWidget(parent)
{
    Accessibility::setRole(*this, QAccessible::Graphic);
    setAccessibleName(QStringLiteral("Coverage: watched versus dark time"));
    setFixedHeight(stripHeight);
}

void CoverageStripView::setContent(const std::vector<HistoryCoverage::Segment>& segments,
                                   const Theme& theme)
{
    if (segments == m_segments && theme == m_theme)
        return;
    m_segments = segments;
    m_theme = theme;
    update();
}

void CoverageStripView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), m_theme.track);
    for (const HistoryCoverage::Segment& segment : m_segments) {
        const double left = segment.from * width();
        painter.fillRect(QRectF(left, 0, std::max(segment.to * width() - left, 1.0), height()),
                         m_theme.dimmed);
    }
}

} // namespace vellumor
