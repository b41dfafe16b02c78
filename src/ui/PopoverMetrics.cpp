#include "ui/PopoverMetrics.h"

#include <QFontInfo>

#include <algorithm>

namespace vellumor {

namespace {

constexpr double usualPixels = 13.0; // of a desktop's font at its usual size

QFont larger(const QFont& font, double points)
{
    QFont changed = font;
    if (font.pointSizeF() > 0)
        changed.setPointSizeF(std::max(font.pointSizeF() + points, 5.0));
    else
        changed.setPixelSize(std::max(font.pixelSize() + qRound(points * 4 / 3), 6));
    return changed;
}

} // namespace

PopoverMetrics PopoverMetrics::of(const QFont& font)
{
    const double growth = std::clamp(QFontInfo(font).pixelSize() / usualPixels, 1.0, 3.0);
    const auto grown = [growth](int points) { return qRound(points * growth); };
    PopoverMetrics metrics{};
    metrics.width = grown(350);
    metrics.margin = 14;
    metrics.row = grown(20);
    metrics.step = 4;
    metrics.barX = grown(112);
    metrics.barWidth = grown(86);
    metrics.barHeight = 6;
    metrics.percentRight = grown(243);
    metrics.base = font;
    metrics.name = larger(font, 1);
    metrics.name.setWeight(QFont::DemiBold);
    metrics.secondary = larger(font, -1);
    return metrics;
}

} // namespace vellumor
