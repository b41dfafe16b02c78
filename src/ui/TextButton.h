#pragma once

#include "ui/FlatButton.h"
#include "ui/Theme.h"

namespace vellumor {

// A word in a thin frame, in the popover's colours.
class TextButton final : public FlatButton {
    Q_OBJECT

public:
    TextButton(const QString& text, QWidget* parent);

    void setTheme(const Theme& theme);
    [[nodiscard]] QSize sizeHint() const override;

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    Theme m_theme;
};

} // namespace vellumor
