#pragma once

#include "ui/SymbolButton.h"

namespace vellumor {

// What a row is moved by: dragged with the mouse, or with the arrow keys while it has the focus.
class DragHandle final : public SymbolButton {
    Q_OBJECT

public:
    explicit DragHandle(QWidget* parent);

signals:
    void dragged(const QPoint& globalPosition); // while the button is held
    void dropped(const QPoint& globalPosition);
    void cancelled();
    void moved(int steps); // -1 up, 1 down

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    bool m_isDragging = false;
    QPoint m_pressedAt;
};

} // namespace vellumor
