#pragma once

#include <QProxyStyle>

namespace vellumor {

// The desktop's style, with an edge around check boxes and radio buttons that can be seen: on dark
// windows styles draw it darker still.
class IndicatorStyle final : public QProxyStyle {
    Q_OBJECT

public:
    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget = nullptr) const override;
};

} // namespace vellumor
