#include "ui/settings/DragHandle.h"

#include <QApplication>
#include <QKeyEvent>

namespace vellumor {

DragHandle::DragHandle(QWidget* parent)
    : SymbolButton(Symbols::Symbol::handle, parent)
{
    setCursor(Qt::OpenHandCursor);
}

void DragHandle::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Up)
        emit moved(-1);
    else if (event->key() == Qt::Key_Down)
        emit moved(1);
    else if (event->key() == Qt::Key_Escape && m_isDragging) {
        m_isDragging = false;
        setDown(false);
        emit cancelled();
    } else
        SymbolButton::keyPressEvent(event);
}

void DragHandle::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    m_pressedAt = event->pos();
    setFocus(Qt::MouseFocusReason); // Escape ends the drag
    setDown(true);
}

void DragHandle::mouseMoveEvent(QMouseEvent* event)
{
    if (!isDown())
        return;
    const int distance = (event->pos() - m_pressedAt).manhattanLength();
    if (distance >= QApplication::startDragDistance())
        m_isDragging = true;
    if (m_isDragging)
        emit dragged(event->globalPosition().toPoint());
}

void DragHandle::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    setDown(false);
    if (m_isDragging)
        emit dropped(event->globalPosition().toPoint());
    m_isDragging = false;
}

} // namespace vellumor
