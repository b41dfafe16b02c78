#pragma once

#include <QAbstractButton>
#include <QSignalBlocker>

namespace vellumor {

// Shows what is kept, without taking it for the user's wish. That one is heard by `toggled` and not
// by `clicked`, which stays silent when a screen reader switches a button.
inline void showChecked(QAbstractButton& button, bool isOn)
{
    const QSignalBlocker quiet(button);
    button.setChecked(isOn);
}

} // namespace vellumor
