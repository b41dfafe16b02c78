#include "platform/linux/tray/RootPosition.h"

#include <algorithm>
#include <cmath>

namespace vellumor::RootPosition {

namespace {

int scaled(int length, double factor)
{
    return static_cast<int>(std::lround(length * factor));
}

} // namespace

std::optional<QPoint> inPoints(QPoint pixel, std::span<const Screen> screens)
{
    for (const auto& [geometry, ratio] : screens) {
        const QRect pixels(geometry.topLeft(), QSize(scaled(geometry.width(), ratio),
                                                     scaled(geometry.height(), ratio)));
        if (!pixels.contains(pixel))
            continue;
        const QPoint inside = pixel - geometry.topLeft();
        return geometry.topLeft() +
               QPoint(static_cast<int>(inside.x() / ratio), static_cast<int>(inside.y() / ratio));
    }
    return std::nullopt;
}

std::optional<QPoint> nearest(QPoint told, std::span<const Screen> screens, QPoint pointer)
{
    const auto fromPixels = inPoints(told, screens);
    const bool isPoint = std::ranges::any_of(
        screens, [told](const Screen& screen) { return screen.geometry.contains(told); });
    if (!isPoint || !fromPixels)
        return isPoint ? std::optional(told) : fromPixels;
    const auto distance = [pointer](QPoint point) { return (point - pointer).manhattanLength(); };
    return distance(told) < distance(*fromPixels) ? told : *fromPixels;
}

} // namespace vellumor::RootPosition
