#pragma once

#include <QAbstractButton>

namespace vellumor {

// A button that draws itself, answers to Enter as well as to the space key, and comes into sight
// when it gets the focus.
class FlatButton : public QAbstractButton {
    Q_OBJECT

public:
    static constexpr double cornerRadius = 5.0; // of what it draws

    explicit FlatButton(QWidget* parent);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
};

} // namespace vellumor
