#pragma once

#include "usage/model/UsageLevel.h"

#include <QColor>
#include <QPalette>

namespace vellumor {

// The colours of the popover and the windows, made of the desktop's palette.
struct Theme {
    static constexpr double dimmedAlpha = 0.6; // of secondary text
    static constexpr double staleAlpha = 0.55; // of a reading that is too old

    QColor background;
    QColor text;
    QColor dimmed;   // secondary text
    QColor hairline; // between sections
    QColor edge;     // of a window without a frame
    QColor track;    // of a bar
    QColor accent;   // of a calm bar's fill
    QColor link;
    QColor high; // of one near its limit
    QColor full; // of one at its limit

    bool operator==(const Theme&) const = default;

    [[nodiscard]] static Theme of(const QPalette& palette);

    [[nodiscard]] const QColor& fill(UsageLevel level) const;
    // `colour` as a reading that is too old shows it.
    [[nodiscard]] QColor stale(const QColor& colour) const;
    [[nodiscard]] bool isDark() const { return background.lightnessF() < 0.5F; }
};

namespace Contrast {

// Between two opaque colours, 1 to 21, as WCAG 2 defines it.
[[nodiscard]] double ratio(const QColor& a, const QColor& b);

// `over` laid on `under` with an alpha of 0 to 1.
[[nodiscard]] QColor blended(const QColor& over, const QColor& under, double alpha);

// The same for text: as faint as `alpha` asks for, but with a contrast of 4.5 if `over` itself has
// it.
[[nodiscard]] QColor readable(const QColor& over, const QColor& under, double alpha);

// `colour` with as much of `text` in it as a contrast of 4.5 needs.
[[nodiscard]] QColor legible(const QColor& colour, const QColor& text, const QColor& background);

} // namespace Contrast

} // namespace vellumor
