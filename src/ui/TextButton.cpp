#include "ui/TextButton.h"

#include <QEvent>
#include <QPainter>

namespace vellumor {

namespace {

constexpr int sidePadding = 10;
constexpr int heightPadding = 8; // above and below together
constexpr double hoverShade = 0.08;
constexpr double pressedShade = 0.16;

} // namespace

TextButton::TextButton(const QString& text, QWidget* parent)
    : FlatButton(parent)
{
    setText(text);
    setAttribute(Qt::WA_Hover);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void TextButton::setTheme(const Theme& theme)
{
    if (theme == m_theme)
        return;
    m_theme = theme;
    update();
}

QSize TextButton::sizeHint() const
{
    const QFontMetrics metrics(font());
    return {metrics.horizontalAdvance(text()) + 2 * sidePadding, metrics.height() + heightPadding};
}

bool TextButton::event(QEvent* event)
{
    if (event->type() == QEvent::HoverEnter || event->type() == QEvent::HoverLeave)
        update();
    return FlatButton::event(event);
}

void TextButton::paintEvent(QPaintEvent*)
{
    const double shade = isDown() ? pressedShade : underMouse() ? hoverShade : 0;
    const double line = hasFocus() ? 2 : 1;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(hasFocus() ? m_theme.accent : m_theme.edge, line));
    painter.setBrush(Contrast::blended(m_theme.text, m_theme.background, shade));
    const double inset = line / 2;
    painter.drawRoundedRect(QRectF(rect()).adjusted(inset, inset, -inset, -inset), cornerRadius,
                            cornerRadius);
    painter.setPen(m_theme.text);
    painter.drawText(rect(), Qt::AlignCenter, text());
}

} // namespace vellumor
