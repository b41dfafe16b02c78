#include "ui/UsageBar.h"

#include <QPainterPath>

#include <algorithm>

namespace vellumor {

namespace {

constexpr double hatchStep = 6.0;
constexpr double hatchWidth = 2.0;
constexpr double hatchAlpha = 0.4;

QPainterPath rounded(const QRectF& place)
{
    QPainterPath path;
    const double radius = place.height() / 2;
    path.addRoundedRect(place, radius, radius);
    return path;
}

void hatch(QPainter& painter, const QRectF& place, const QColor& colour)
{
    painter.setPen(QPen(colour, hatchWidth));
    for (double x = place.left() - place.height(); x < place.right(); x += hatchStep)
        painter.drawLine(QPointF(x, place.bottom() + 1),
                         QPointF(x + place.height() + 2, place.top() - 1));
}

} // namespace

void UsageBar::paint(QPainter& painter, const QRectF& place, const Theme& theme) const
{
    const UsageLevel level = usageLevel(percent);
    const double alpha = isStale ? Theme::staleAlpha : 1.0;
    const QColor fill = Contrast::blended(theme.fill(level), theme.background, alpha);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillPath(rounded(place), Contrast::blended(theme.track, theme.background, alpha));
    QRectF used = place;
    used.setWidth(place.width() * std::clamp(percent, 0.0, 100.0) / 100.0);
    if (used.width() > 0) {
        used.setWidth(std::max(used.width(), place.height())); // a dot at least
        painter.fillPath(rounded(used), fill);
        if (level == UsageLevel::full) {
            painter.setClipPath(rounded(used));
            hatch(painter, used, Contrast::blended(theme.background, fill, hatchAlpha));
        }
    }
    painter.restore();
}

} // namespace vellumor
