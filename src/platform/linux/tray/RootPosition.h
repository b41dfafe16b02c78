#pragma once

#include <QPoint>
#include <QRect>

#include <optional>
#include <span>

// Where on Qt's screens a pixel of the X11 root window lies. Pure.
namespace vellumor::RootPosition {

// As QScreen tells it: a screen's corner is in pixels, its size and what lies on it in points.
struct Screen {
    QRect geometry;
    double pixelsPerPoint;
};

// Nothing when it lies on no screen.
[[nodiscard]] std::optional<QPoint> inPoints(QPoint pixel, std::span<const Screen> screens);

// The same for what a panel tells, which may be in pixels or already in points: of the two the one
// that is nearer to the pointer, which has just been there.
[[nodiscard]] std::optional<QPoint> nearest(QPoint told, std::span<const Screen> screens,
                                            QPoint pointer);

} // namespace vellumor::RootPosition
