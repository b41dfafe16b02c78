#include "ui/FlatButton.h"

#include <QKeyEvent>
#include <QScrollArea>

namespace vellumor {

FlatButton::FlatButton(QWidget* parent)
    : QAbstractButton(parent)
{
    setFocusPolicy(Qt::TabFocus);
}

void FlatButton::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        click();
    else
        QAbstractButton::keyPressEvent(event);
}

void FlatButton::focusInEvent(QFocusEvent* event)
{
    QAbstractButton::focusInEvent(event);
    for (QWidget* above = parentWidget(); above != nullptr; above = above->parentWidget()) {
        if (auto* const area = qobject_cast<QScrollArea*>(above))
            area->ensureWidgetVisible(this);
    }
}

} // namespace vellumor
