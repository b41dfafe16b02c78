#include "ui/SymbolButton.h"

#include "ui/OneLine.h"

#include <QEvent>
#include <QPainter>

namespace vellumor {

namespace {

constexpr int symbolPoints = 16;
constexpr int targetPoints = 24;
constexpr int padding = 6; // before and behind a text
constexpr double hoverAlpha = 0.10;
constexpr double pressedAlpha = 0.18;

} // namespace

SymbolButton::SymbolButton(Symbols::Symbol symbol, QWidget* parent)
    : FlatButton(parent)
    , m_symbol(symbol)
    , m_colour(palette().color(QPalette::Text))
{
    setAttribute(Qt::WA_Hover);
    setFixedSize(sizeHint());
}

void SymbolButton::setSymbol(Symbols::Symbol symbol)
{
    if (symbol == m_symbol)
        return;
    m_symbol = symbol;
    m_drawn = QPixmap();
    update();
}

void SymbolButton::setHelp(const std::string& help)
{
    const QString text = oneLine(help);
    setAccessibleName(text);
    setFixedSize(sizeHint());
    setToolTip(QStringLiteral("<span>%1</span>").arg(text.toHtmlEscaped()));
}

void SymbolButton::setColour(const QColor& colour)
{
    if (colour == m_colour)
        return;
    m_colour = colour;
    m_drawn = QPixmap();
    update();
}

QSize SymbolButton::sizeHint() const
{
    if (text().isEmpty())
        return {targetPoints, targetPoints};
    return {symbolPoints + fontMetrics().horizontalAdvance(text()) + 2 * padding, targetPoints};
}

void SymbolButton::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::FontChange)
        setFixedSize(sizeHint());
    FlatButton::changeEvent(event);
}

bool SymbolButton::event(QEvent* event)
{
    if (event->type() == QEvent::HoverEnter || event->type() == QEvent::HoverLeave)
        update();
    return FlatButton::event(event);
}

void SymbolButton::paintEvent(QPaintEvent*)
{
    if (m_drawn.isNull() || m_drawn.devicePixelRatio() != devicePixelRatioF())
        m_drawn = Symbols::pixmap(m_symbol, symbolPoints, m_colour, devicePixelRatioF());
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (isEnabled() && (isDown() || underMouse())) {
        QColor shade = m_colour;
        shade.setAlphaF(static_cast<float>(isDown() ? pressedAlpha : hoverAlpha));
        painter.setPen(Qt::NoPen);
        painter.setBrush(shade);
        painter.drawRoundedRect(rect(), cornerRadius, cornerRadius);
    }
    if (hasFocus()) {
        painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), cornerRadius - 1,
                                cornerRadius - 1);
    }
    const int margin = (targetPoints - symbolPoints) / 2;
    // Beside a text it stands as far to the left as it can, to be in line with what is below.
    painter.drawPixmap(text().isEmpty() ? margin : 0, margin, m_drawn);
    painter.setPen(m_colour);
    painter.drawText(rect().adjusted(symbolPoints + padding, 0, 0, 0),
                     static_cast<int>(Qt::AlignVCenter) | static_cast<int>(Qt::AlignLeft), text());
}

} // namespace vellumor
