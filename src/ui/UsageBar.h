#pragma once

#include "ui/Theme.h"

#include <QPainter>

namespace vellumor {

// How much of a limit is used: a rounded track, and a fill in the colour of its danger. A full one
// is hatched too, for eyes that do not tell the colours apart.
struct UsageBar {
    double percent = 0; // a value beyond 0 to 100 counts as the nearer end
    bool isStale = false;

    void paint(QPainter& painter, const QRectF& place, const Theme& theme) const;
};

} // namespace vellumor
