#include "ui/PopoverPlace.h"

#include <algorithm>

namespace vellumor::PopoverPlace {

namespace {

constexpr int gap = 4; // to the item and to the edges

int within(int wanted, int length, int from, int to)
{
    return std::max(std::min(wanted, to - length - gap), from + gap);
}

} // namespace

QRect rect(const std::optional<QRect>& anchor, QSize size, const QRect& available)
{
    const int right = available.x() + available.width();
    const int bottom = available.y() + available.height();
    int x = right;
    int y = available.y();
    if (anchor) {
        // Far-off coordinates must not overflow.
        const int middle = std::clamp(anchor->x() + anchor->width() / 2, available.x(), right);
        const bool isAbove = anchor->center().y() < available.center().y();
        x = middle - size.width() / 2;
        y = isAbove ? std::clamp(anchor->bottom() + gap, available.y(), bottom)
                    : std::clamp(anchor->top(), available.y(), bottom) - gap - size.height();
    }
    return {QPoint(within(x, size.width(), available.x(), right),
                   within(y, size.height(), available.y(), bottom)),
            size};
}

} // namespace vellumor::PopoverPlace
