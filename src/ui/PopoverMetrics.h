#pragma once

#include <QFont>

namespace vellumor {

// The popover's one grid, in points, grown with the desktop's font.
struct PopoverMetrics {
    int width;  // of the whole window
    int margin; // at its sides
    int row;    // height of one limit
    int step;   // the grid's step
    int barX;   // from the left margin
    int barWidth;
    int barHeight;
    int percentRight; // the percents' right end, from the left margin

    QFont base;      // the desktop's own
    QFont name;      // semi-bold, a point larger
    QFont secondary; // a point smaller

    [[nodiscard]] static PopoverMetrics of(const QFont& font);
    [[nodiscard]] int contentWidth() const { return width - 2 * margin; }
};

} // namespace vellumor
