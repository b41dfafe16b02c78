#include "ui/settings/TabBarButton.h"

#include "ui/Accessibility.h"

#include <QPainter>

#include <algorithm>

namespace vellumor {

namespace {

constexpr int symbolPoints = 20;
constexpr int padding = 8;
constexpr int leastWidth = 72;
constexpr double radius = 6.0;
constexpr double selectedAlpha = 0.10;

} // namespace

TabBarButton::TabBarButton(SettingsTab tab, QWidget* parent)
    : FlatButton(parent)
    , m_tab(tab)
{
    Accessibility::setRole(*this, QAccessible::PageTab);
    const std::string_view name = title(tab);
    setText(QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size())));
    setAccessibleName(text());
    setCheckable(true);
}

QSize TabBarButton::sizeHint() const
{
    const QFontMetrics metrics(font());
    return {std::max(leastWidth, metrics.horizontalAdvance(text()) + 2 * padding),
            symbolPoints + metrics.height() + 2 * padding};
}

void TabBarButton::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor colour = palette().color(isChecked() ? QPalette::Highlight : QPalette::WindowText);
    if (isChecked()) {
        QColor shade = palette().color(QPalette::WindowText);
        shade.setAlphaF(static_cast<float>(selectedAlpha));
        painter.setPen(Qt::NoPen);
        painter.setBrush(shade);
        painter.drawRoundedRect(rect(), radius, radius);
    }
    if (hasFocus()) {
        painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), radius - 1, radius - 1);
    }
    if (m_drawn.isNull() || colour != m_drawnColour ||
        m_drawn.devicePixelRatio() != devicePixelRatioF()) {
        m_drawn = Symbols::pixmap(symbol(m_tab), symbolPoints, colour, devicePixelRatioF());
        m_drawnColour = colour;
    }
    painter.drawPixmap((width() - symbolPoints) / 2, padding, m_drawn);
    painter.setPen(palette().color(QPalette::WindowText));
    painter.drawText(QRect(0, padding + symbolPoints, width(), height() - padding - symbolPoints),
                     Qt::AlignCenter, text());
}

} // namespace vellumor
