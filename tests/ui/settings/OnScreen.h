#pragma once

#include "ui/PlainText.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QLineEdit>
#include <QMenu>
#include <QMouseEvent>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollArea>
#include <qtestsupport_widgets.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>
#include <string>
#include <vector>

// What a window shows, and what somebody in front of it does.
namespace vellumor::test {

using Texts = std::vector<std::string>;

inline void passEvents()
{
    for (int i = 0; i < 5; ++i) {
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

// To a screen reader. That of a list is what is chosen in it; the name that it was given stands in
// its accessibleName().
inline std::string nameOf(QWidget* widget)
{
    QAccessibleInterface* const seen = QAccessible::queryAccessibleInterface(widget);
    return seen == nullptr ? "" : seen->text(QAccessible::Name).toStdString();
}

inline QAccessible::Role roleOf(QWidget* widget)
{
    QAccessibleInterface* const seen = QAccessible::queryAccessibleInterface(widget);
    return seen == nullptr ? QAccessible::NoRole : seen->role();
}

// From top to bottom, and what stands in one line from left to right.
template <typename Widget>
void sortForReading(std::vector<Widget*>& widgets, const QWidget& window)
{
    constexpr int sameLine = 9; // points between the middles
    const auto middle = [&](const QWidget* widget) {
        return widget->mapTo(&window, widget->rect().center());
    };
    const auto left = [&](const QWidget* widget) { return widget->mapTo(&window, QPoint()).x(); };
    std::ranges::stable_sort(widgets, {}, [&](const QWidget* each) { return middle(each).y(); });
    for (auto line = widgets.begin(); line != widgets.end();) {
        const auto end = std::find_if(line, widgets.end(), [&](const QWidget* each) {
            return middle(each).y() > middle(*line).y() + sameLine;
        });
        std::stable_sort(line, end,
                         [&](const auto* a, const auto* b) { return left(a) < left(b); });
        line = end;
    }
}

// Whether some of it lies within all that is around it.
inline bool canBeSeen(const QWidget& widget)
{
    QRect part = widget.rect();
    for (const QWidget* at = &widget; !at->isWindow(); at = at->parentWidget())
        part = part.translated(at->pos()) & at->parentWidget()->rect();
    return widget.isVisible() && !part.isEmpty();
}

// Those below `window` that can be seen, in the order in which one reads.
template <typename Widget>
[[nodiscard]] std::vector<Widget*> shown(const QWidget& window)
{
    std::vector<Widget*> found;
    for (auto* const widget : window.findChildren<Widget*>()) {
        if (canBeSeen(*widget))
            found.push_back(widget);
    }
    sortForReading(found, window);
    return found;
}

// All visible ones of a name.
template <typename Widget>
[[nodiscard]] std::vector<Widget*> allNamed(const QWidget& window, const std::string& name)
{
    std::vector<Widget*> found;
    for (Widget* const widget : shown<Widget>(window)) {
        if (nameOf(widget) == name || widget->accessibleName().toStdString() == name)
            found.push_back(widget);
    }
    return found;
}

template <typename Widget>
[[nodiscard]] Widget& named(const QWidget& window, const std::string& name)
{
    const auto found = allNamed<Widget>(window, name);
    if (found.empty())
        throw std::runtime_error("nothing is shown that is called " + name);
    return *found.front();
}

[[nodiscard]] inline bool isShown(const QWidget& window, const std::string& name)
{
    return !allNamed<QWidget>(window, name).empty();
}

// The texts of all labels, in the order in which one reads.
[[nodiscard]] inline Texts texts(const QWidget& window)
{
    Texts found;
    for (const QLabel* label : shown<QLabel>(window)) {
        if (!label->text().isEmpty())
            found.push_back(label->text().toStdString());
    }
    return found;
}

[[nodiscard]] inline bool says(const QWidget& window, const std::string& text)
{
    const Texts all = texts(window);
    return std::find(all.begin(), all.end(), text) != all.end();
}

inline void press(const QWidget& window, const std::string& name)
{
    auto& button = named<QAbstractButton>(window, name);
    ASSERT_TRUE(button.isEnabled()) << name;
    button.click();
}

inline void key(QWidget& to, int key, const QString& text = {},
                Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    QKeyEvent down(QEvent::KeyPress, key, modifiers, text);
    QCoreApplication::sendEvent(&to, &down);
    QKeyEvent up(QEvent::KeyRelease, key, modifiers, text);
    QCoreApplication::sendEvent(&to, &up);
}

// Letter by letter, in place of what stands there.
inline void type(QLineEdit& edit, const QString& text)
{
    edit.setFocus(Qt::TabFocusReason);
    edit.selectAll();
    if (text.isEmpty())
        key(edit, Qt::Key_Delete);
    for (const QChar letter : text)
        key(edit, letter.toUpper().unicode(), letter);
}

// With the arrow keys, as a list without a mouse is used.
inline void choose(QComboBox& box, const QString& text)
{
    const int wanted = box.findText(text);
    ASSERT_GE(wanted, 0) << text.toStdString();
    ASSERT_TRUE(box.isEnabled());
    const int arrow = wanted > box.currentIndex() ? Qt::Key_Down : Qt::Key_Up;
    for (int steps = std::abs(wanted - box.currentIndex()); steps > 0; --steps)
        key(box, arrow);
}

inline void mouse(QWidget& to, QEvent::Type kind, const QPoint& globalPosition,
                  Qt::MouseButton button = Qt::LeftButton)
{
    const bool isHeld = kind != QEvent::MouseButtonRelease;
    QMouseEvent event(kind, to.mapFromGlobal(QPointF(globalPosition)), QPointF(globalPosition),
                      kind == QEvent::MouseMove ? Qt::NoButton : button,
                      isHeld ? Qt::MouseButtons(button) : Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&to, &event);
}

// The window that stands over the others; null when there is none.
[[nodiscard]] inline QDialog* dialog()
{
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (auto* const found = qobject_cast<QDialog*>(window);
            found != nullptr && found->isVisible())
            return found;
    }
    return nullptr;
}

[[nodiscard]] inline QMenu* openMenu()
{
    return qobject_cast<QMenu*>(QApplication::activePopupWidget());
}

// With the Return key, in the menu that is open.
inline void pick(const QString& text)
{
    QMenu* const menu = openMenu();
    ASSERT_NE(menu, nullptr);
    for (QAction* action : menu->actions()) {
        if (action->text() == text) {
            menu->setActiveAction(action);
            return key(*menu, Qt::Key_Return);
        }
    }
    FAIL() << "the menu has no " << text.toStdString();
}

// Every text has the room that it needs, and lies within its window.
inline void expectNothingClipped(const QWidget& window)
{
    for (QWidget* const widget : shown<QWidget>(window)) {
        const std::string what =
            std::string(widget->metaObject()->className()) + " \"" + nameOf(widget) + '"';
        const QPoint at = widget->mapTo(&window, QPoint());
        EXPECT_GE(at.x(), 0) << what;
        EXPECT_LE(at.x() + widget->width(), window.width()) << what;
        if (auto* const plain = qobject_cast<PlainText*>(widget)) {
            EXPECT_EQ(plain->toolTip().toStdString(), "") << what; // it has one where it is cut
            EXPECT_GE(plain->height(), plain->heightForWidth(plain->width())) << what;
        } else if (qobject_cast<QLabel*>(widget) != nullptr ||
                   qobject_cast<QCheckBox*>(widget) != nullptr ||
                   qobject_cast<QRadioButton*>(widget) != nullptr ||
                   qobject_cast<QComboBox*>(widget) != nullptr ||
                   qobject_cast<QAbstractButton*>(widget) != nullptr) {
            EXPECT_GE(widget->width(), widget->sizeHint().width()) << what;
            EXPECT_GE(widget->height(), widget->sizeHint().height()) << what;
        }
    }
}

// The application's font, so many times its size, for as long as this lives.
class FontScale {
public:
    explicit FontScale(double scale)
    {
        QFont larger = m_before;
        larger.setPointSizeF(m_before.pointSizeF() * scale);
        QApplication::setFont(larger);
    }
    FontScale(const FontScale&) = delete;
    FontScale& operator=(const FontScale&) = delete;
    ~FontScale() { QApplication::setFont(m_before); }

private:
    QFont m_before = QApplication::font();
};

} // namespace vellumor::test
