#include "ui/Accessibility.h"

#include <QAbstractButton>
#include <QAccessibleWidget>
#include <QWidget>

namespace vellumor::Accessibility {

namespace {

constexpr const char* roleProperty = "accessibleRole";

// A button that is something else to a screen reader, and can be pressed all the same.
class PressableWidget final : public QAccessibleWidget {
public:
    PressableWidget(QAbstractButton& button, QAccessible::Role role)
        : QAccessibleWidget(&button, role)
        , m_button(button)
    {
    }

    [[nodiscard]] QString text(QAccessible::Text which) const override
    {
        const QString given = QAccessibleWidget::text(which);
        return given.isEmpty() && which == QAccessible::Name ? m_button.text() : given;
    }
    [[nodiscard]] QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleWidget::state();
        state.selectable = m_button.isCheckable();
        state.selected = m_button.isChecked();
        return state;
    }
    [[nodiscard]] QStringList actionNames() const override
    {
        return QStringList(pressAction()) + QAccessibleWidget::actionNames();
    }
    void doAction(const QString& name) override
    {
        if (name == pressAction())
            m_button.animateClick();
        else
            QAccessibleWidget::doAction(name);
    }

private:
    QAbstractButton& m_button;
};

QAccessibleInterface* make(const QString&, QObject* object)
{
    auto* const widget = qobject_cast<QWidget*>(object);
    if (widget == nullptr || !widget->property(roleProperty).isValid())
        return nullptr;
    const auto role = static_cast<QAccessible::Role>(widget->property(roleProperty).toInt());
    // Owned by Qt's cache.
    if (auto* const button = qobject_cast<QAbstractButton*>(object))
        return new PressableWidget(*button, role);
    return new QAccessibleWidget(widget, role);
}

} // namespace

void install()
{
    QAccessible::installFactory(make);
}

void setRole(QWidget& widget, QAccessible::Role role)
{
    widget.setProperty(roleProperty, static_cast<int>(role));
}

} // namespace vellumor::Accessibility
