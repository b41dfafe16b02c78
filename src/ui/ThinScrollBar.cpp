#include "ui/ThinScrollBar.h"

#include <QPainter>
#include <QProxyStyle>
#include <QScrollArea>
#include <QScrollBar>
#include <QStyleOption>

namespace vellumor {

namespace {

constexpr int extent = 8;
constexpr double handleInset = 2.0; // of the handle, at its sides
constexpr double restingAlpha = 0.3;
constexpr double hoveredAlpha = 0.5;

class ThinStyle final : public QProxyStyle {
public:
    int pixelMetric(PixelMetric metric, const QStyleOption* option,
                    const QWidget* widget) const override
    {
        return metric == PM_ScrollBarExtent ? extent
                                            : QProxyStyle::pixelMetric(metric, option, widget);
    }

    // No arrows: the groove is all of the bar.
    QRect subControlRect(ComplexControl control, const QStyleOptionComplex* option, SubControl part,
                         const QWidget* widget) const override
    {
        const auto* bar = qstyleoption_cast<const QStyleOptionSlider*>(option);
        if (control != CC_ScrollBar || bar == nullptr)
            return QProxyStyle::subControlRect(control, option, part, widget);
        if (part == SC_ScrollBarGroove)
            return bar->rect;
        const QRect handle = handleOf(*bar);
        if (part == SC_ScrollBarSlider)
            return handle;
        if (part == SC_ScrollBarSubPage)
            return {bar->rect.topLeft(), QSize(extent, handle.top())};
        if (part == SC_ScrollBarAddPage)
            return {0, handle.bottom() + 1, extent, bar->rect.height() - handle.bottom() - 1};
        return {};
    }

    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                            QPainter* painter, const QWidget* widget) const override
    {
        const auto* bar = qstyleoption_cast<const QStyleOptionSlider*>(option);
        if (control != CC_ScrollBar || bar == nullptr) {
            QProxyStyle::drawComplexControl(control, option, painter, widget);
            return;
        }
        QColor colour = bar->palette.color(QPalette::Text);
        const bool isHovered = bar->state.testFlag(State_MouseOver);
        colour.setAlphaF(static_cast<float>(isHovered ? hoveredAlpha : restingAlpha));
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setPen(Qt::NoPen);
        painter->setBrush(colour);
        const QRectF handle =
            QRectF(handleOf(*bar)).adjusted(handleInset, handleInset, -handleInset, -handleInset);
        painter->drawRoundedRect(handle, handle.width() / 2, handle.width() / 2);
        painter->restore();
    }

private:
    [[nodiscard]] static QRect handleOf(const QStyleOptionSlider& bar)
    {
        constexpr int leastLength = 24;
        const int range = bar.maximum - bar.minimum;
        const int length =
            range + bar.pageStep > 0
                ? std::max(leastLength, static_cast<int>(qint64(bar.rect.height()) * bar.pageStep /
                                                         (range + bar.pageStep)))
                : bar.rect.height();
        const int top = sliderPositionFromValue(bar.minimum, bar.maximum, bar.sliderPosition,
                                                bar.rect.height() - length, bar.upsideDown);
        return {0, top, extent, length};
    }
};

} // namespace

void setThinScrollBar(QScrollArea& area)
{
    auto* const bar = new QScrollBar(Qt::Vertical, &area);
    auto* const style = new ThinStyle;
    style->setParent(bar);
    bar->setStyle(style);
    bar->setAttribute(Qt::WA_OpaquePaintEvent, false);
    area.setVerticalScrollBar(bar);
}

} // namespace vellumor
