#pragma once

#include <QScreen>
#include <QWidget>

namespace vellumor {

// Gives the window the size that it asks for, and a place in the middle of its screen.
inline void centreOnScreen(QWidget& window)
{
    window.adjustSize();
    QRect place = window.frameGeometry();
    place.moveCenter(window.screen()->availableGeometry().center());
    window.move(place.topLeft());
}

} // namespace vellumor
