#include "ui/LinkButton.h"

#include "ui/Accessibility.h"
#include "ui/Theme.h"

#include <QPainter>

namespace vellumor {

LinkButton::LinkButton(QWidget* parent)
    : FlatButton(parent)
{
    Accessibility::setRole(*this, QAccessible::Link);
    setCursor(Qt::PointingHandCursor);
    setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Fixed);
}

void LinkButton::setColour(const QColor& colour)
{
    if (colour == m_colour)
        return;
    m_colour = colour;
    update();
}

QSize LinkButton::sizeHint() const
{
    const QFontMetrics metrics(font());
    return {metrics.horizontalAdvance(text()) + 2, metrics.height() + 2};
}

void LinkButton::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    QFont underlined = font();
    underlined.setUnderline(true);
    painter.setFont(underlined);
    painter.setPen(m_colour.isValid() ? m_colour : Theme::of(palette()).link);
    painter.drawText(rect(), static_cast<int>(Qt::AlignVCenter) | static_cast<int>(Qt::AlignLeft),
                     text());
    if (hasFocus()) {
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(palette().color(QPalette::Highlight), 1.5));
        painter.drawRoundedRect(QRectF(rect()).adjusted(0.75, 0.75, -0.75, -0.75), 3, 3);
    }
}

} // namespace vellumor
