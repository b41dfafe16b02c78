#pragma once

#include "ui/FlatButton.h"

#include <QColor>

namespace vellumor {

// A text that leads to a page, underlined, in the colour that the theme of its palette has for
// that.
class LinkButton final : public FlatButton {
    Q_OBJECT

public:
    explicit LinkButton(QWidget* parent);

    void setColour(const QColor& colour); // instead of the palette's
    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QColor m_colour; // invalid: the palette's
};

} // namespace vellumor
