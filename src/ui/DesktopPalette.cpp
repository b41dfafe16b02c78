#include "ui/DesktopPalette.h"

#include <QApplication>

namespace vellumor {

namespace {

bool isDark(const QPalette& palette)
{
    return palette.color(QPalette::Window).lightnessF() <
           palette.color(QPalette::WindowText).lightnessF();
}

} // namespace

DesktopPalette::DesktopPalette()
    : m_own(QApplication::palette())
{
}

void DesktopPalette::adopt(std::optional<bool> prefersDark)
{
    const bool makeDark = prefersDark == true && !isDark(m_own);
    if (makeDark != isDark(QApplication::palette()) || !makeDark)
        QApplication::setPalette(makeDark ? dark() : m_own);
}

QPalette DesktopPalette::dark()
{
    const QColor text(0xe8, 0xe9, 0xed);
    const QColor window(0x2b, 0x2e, 0x36);
    const QColor accent(0x5c, 0x9d, 0xff);
    QPalette palette(text, window);
    palette.setColor(QPalette::Base, QColor(0x24, 0x27, 0x2e));
    palette.setColor(QPalette::AlternateBase, window);
    palette.setColor(QPalette::Text, text);
    palette.setColor(QPalette::WindowText, text);
    palette.setColor(QPalette::Button, QColor(0x3a, 0x3e, 0x48));
    palette.setColor(QPalette::ButtonText, text);
    palette.setColor(QPalette::ToolTipBase, QColor(0x3a, 0x3e, 0x48));
    palette.setColor(QPalette::ToolTipText, text);
    palette.setColor(QPalette::PlaceholderText, QColor(0xa0, 0xa4, 0xad));
    palette.setColor(QPalette::Highlight, accent);
    palette.setColor(QPalette::HighlightedText, QColor(0x10, 0x12, 0x16));
    palette.setColor(QPalette::Link, QColor(0x8a, 0xb8, 0xff));
    for (const QPalette::ColorRole role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, QColor(0x7d, 0x81, 0x8a));
    return palette;
}

} // namespace vellumor
