#include "ui/IndicatorStyle.h"

#include "ui/Theme.h"

#include <QPainter>
#include <QStyleOption>

namespace vellumor {

namespace {

constexpr double frameAlpha = 0.45; // at least 3 to 1 on both schemes
constexpr double cornerRadius = 2.0;

bool isIndicator(QStyle::PrimitiveElement element)
{
    return element == QStyle::PE_IndicatorCheckBox || element == QStyle::PE_IndicatorRadioButton;
}

} // namespace

void IndicatorStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option,
                                   QPainter* painter, const QWidget* widget) const
{
    QProxyStyle::drawPrimitive(element, option, painter, widget);
    if (!isIndicator(element))
        return;
    const QColor window = option->palette.color(QPalette::Window);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(
        Contrast::blended(option->palette.color(QPalette::WindowText), window, frameAlpha));
    painter->setBrush(Qt::NoBrush);
    const QRectF edge = QRectF(option->rect).adjusted(0.5, 0.5, -0.5, -0.5);
    const double radius =
        element == PE_IndicatorCheckBox ? cornerRadius : std::min(edge.width(), edge.height()) / 2;
    painter->drawRoundedRect(edge, radius, radius);
    painter->restore();
}

} // namespace vellumor
