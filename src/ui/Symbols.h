#pragma once

#include <QColor>
#include <QPixmap>

// Symbols: the small pictures on buttons and before notes, from the desktop's icon theme, and our
// own drawings where it has none.
namespace vellumor::Symbols {

enum class Symbol {
    history,
    refresh,
    settings,
    dismiss,
    warning,
    menuBar,
    about,
    back,
    accounts,
    usage,
    notifications,
    privacy,
    handle,
    pinned,
    unpinned,
    more
};

// In one colour, `points` wide and high. Never empty.
[[nodiscard]] QPixmap pixmap(Symbol symbol, int points, const QColor& colour, double scale);

} // namespace vellumor::Symbols
