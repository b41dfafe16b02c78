#pragma once

#include "ui/FlatButton.h"

#include <QColor>

namespace vellumor {

// A text that leads to a page, underlined, in the accent colour.
class LinkButton final : public FlatButton {
    Q_OBJECT

public:
    explicit LinkButton(QWidget* parent);

    void setColour(const QColor& colour);
    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QColor m_colour;
};

} // namespace vellumor
