#include "ui/settings/AccountRows.h"

#include "ui/settings/DragHandle.h"
#include "ui/settings/SettingsTesting.h"

#include <QFrame>
#include <QScrollBar>

namespace vellumor::accountRowsTest {
namespace {

using test::Names;

struct AccountRowsTest : test::SettingsTesting {
    void openWith(const Names& names)
    {
        addAll(names);
        rescan();
        open(SettingsTab::accounts);
    }
    [[nodiscard]] Names shownNames() const
    {
        Names names;
        for (const auto* field : test::allNamed<QLineEdit>(*window, "Name"))
            names.push_back(field->text().toStdString());
        return names;
    }
    // Of the row at this place, counted from 0.
    [[nodiscard]] QWidget& handle(std::size_t place) const
    {
        return *test::allNamed<QAbstractButton>(*window, "Move").at(place);
    }
    [[nodiscard]] static QPoint centreOf(const QWidget& widget)
    {
        return widget.mapToGlobal(widget.rect().center());
    }
    // Onto the upper (below 0) or the lower half of the row at `to`.
    [[nodiscard]] QPoint beside(std::size_t to, int half) const
    {
        return centreOf(handle(to)) + QPoint(0, half * 6);
    }
    void drag(std::size_t from, const QPoint& to)
    {
        QWidget& held = handle(from);
        const QPoint start = centreOf(held);
        test::mouse(held, QEvent::MouseButtonPress, start);
        test::mouse(held, QEvent::MouseMove, (start + to) / 2);
        test::mouse(held, QEvent::MouseMove, to);
        test::mouse(held, QEvent::MouseButtonRelease, to);
        pass();
    }
    // What shows where a drop would put the row; null when nothing does.
    [[nodiscard]] const QFrame* mark() const
    {
        const auto* const rows = window->findChild<AccountRows*>();
        for (const auto* frame : rows->findChildren<QFrame*>(Qt::FindDirectChildrenOnly)) {
            if (frame->isVisible())
                return frame;
        }
        return nullptr;
    }
};

TEST_F(AccountRowsTest, aRowThatIsDraggedTakesThePlaceWhereItIsDropped)
{
    openWith({"ada", "ben", "cyd"});
    struct Row {
        std::size_t from;
        std::size_t onto;
        int half;
        Names result;
    };
    const Row table[] = {
        {0, 2, 1, {"ben", "cyd", "ada"}},  // to the end
        {2, 0, -1, {"ada", "ben", "cyd"}}, // to the start
        {0, 1, 1, {"ben", "ada", "cyd"}},  // one on
        {2, 1, -1, {"ben", "cyd", "ada"}}, // one back
        {0, 1, -1, {"ben", "cyd", "ada"}}, // in front of the next: where it is
        {1, 0, 1, {"ben", "cyd", "ada"}},  // behind the one before: where it is
    };
    for (const Row& row : table) {
        drag(row.from, beside(row.onto, row.half));
        EXPECT_EQ(shownNames(), row.result);
        EXPECT_EQ(namesOf(state.accounts()), row.result);
        EXPECT_EQ(mark(), nullptr);
    }
    EXPECT_EQ(recordOnDisk("ben").order, 0);
    EXPECT_EQ(recordOnDisk("cyd").order, 1);
    EXPECT_EQ(recordOnDisk("ada").order, 2);
}

TEST_F(AccountRowsTest, aRowThatIsDroppedWhereItWasIsNoChange)
{
    openWith({"ada", "ben", "cyd"});
    disk.forget();
    for (const int half : {-1, 1})
        drag(1, beside(1, half));
    drag(1, beside(0, 1));
    drag(1, beside(2, -1));
    EXPECT_EQ(disk.written(), Names());
    EXPECT_EQ(shownNames(), (Names{"ada", "ben", "cyd"}));
}

TEST_F(AccountRowsTest, aDropOutsideTheListGoesToItsNearerEnd)
{
    openWith({"ada", "ben", "cyd"});
    drag(0, centreOf(handle(2)) + QPoint(400, 3000));
    EXPECT_EQ(shownNames(), (Names{"ben", "cyd", "ada"}));
    drag(1, centreOf(handle(0)) - QPoint(400, 3000));
    EXPECT_EQ(shownNames(), (Names{"cyd", "ben", "ada"}));
}

TEST_F(AccountRowsTest, anUntrackedAccountIsDraggedLikeAnyOther)
{
    openWith({"ada", "ben", "cyd"});
    state.setTracked(id("ben"), false);
    pass();
    drag(1, beside(0, -1));
    EXPECT_EQ(shownNames(), (Names{"ben", "ada", "cyd"}));
    EXPECT_EQ(recordOnDisk("ben").order, 0);
    EXPECT_FALSE(recordOnDisk("ben").tracked);
}

TEST_F(AccountRowsTest, aMarkShowsWhereADropWouldGo)
{
    openWith({"ada", "ben", "cyd"});
    QWidget& held = handle(0);
    test::mouse(held, QEvent::MouseButtonPress, centreOf(held));
    EXPECT_EQ(mark(), nullptr);
    test::mouse(held, QEvent::MouseMove, beside(1, 1));
    ASSERT_NE(mark(), nullptr);
    const int first = mark()->y();
    EXPECT_EQ(mark()->width(), mark()->parentWidget()->width());
    test::mouse(held, QEvent::MouseMove, beside(2, 1));
    EXPECT_GT(mark()->y(), first);
    EXPECT_TRUE(mark()->parentWidget()->rect().contains(mark()->geometry()));
    EXPECT_EQ(shownNames(), (Names{"ada", "ben", "cyd"})); // not before the drop
    test::mouse(held, QEvent::MouseButtonRelease, beside(2, 1));
    EXPECT_EQ(mark(), nullptr);
}

TEST_F(AccountRowsTest, aClickMovesNothing)
{
    openWith({"ada", "ben"});
    QWidget& held = handle(0);
    test::mouse(held, QEvent::MouseButtonPress, centreOf(held));
    test::mouse(held, QEvent::MouseMove, centreOf(held) + QPoint(1, 1));
    EXPECT_EQ(mark(), nullptr);
    test::mouse(held, QEvent::MouseButtonRelease, centreOf(held) + QPoint(1, 1));
    pass();
    EXPECT_EQ(shownNames(), (Names{"ada", "ben"}));
    test::mouse(held, QEvent::MouseMove, beside(1, 1)); // not held any more
    EXPECT_EQ(mark(), nullptr);
}

TEST_F(AccountRowsTest, theOtherMouseButtonsDragNothing)
{
    openWith({"ada", "ben"});
    QWidget& held = handle(0);
    test::mouse(held, QEvent::MouseButtonPress, centreOf(held), Qt::RightButton);
    test::mouse(held, QEvent::MouseMove, beside(1, 1));
    test::mouse(held, QEvent::MouseButtonRelease, beside(1, 1), Qt::RightButton);
    pass();
    EXPECT_EQ(shownNames(), (Names{"ada", "ben"}));
    test::mouse(held, QEvent::MouseButtonPress, centreOf(held));
    test::mouse(held, QEvent::MouseMove, beside(1, 1));
    test::mouse(held, QEvent::MouseButtonPress, beside(1, 1), Qt::RightButton);
    test::mouse(held, QEvent::MouseButtonRelease, beside(1, 1), Qt::RightButton);
    pass();
    EXPECT_EQ(shownNames(), (Names{"ada", "ben"})); // still held by the left one
    test::mouse(held, QEvent::MouseButtonRelease, beside(1, 1));
    pass();
    EXPECT_EQ(shownNames(), (Names{"ben", "ada"}));
}

TEST_F(AccountRowsTest, escapeEndsADrag)
{
    openWith({"ada", "ben"});
    QWidget& held = handle(0);
    test::mouse(held, QEvent::MouseButtonPress, centreOf(held));
    test::mouse(held, QEvent::MouseMove, beside(1, 1));
    ASSERT_EQ(QApplication::focusWidget(), &held); // so that the key reaches it
    test::key(held, Qt::Key_Escape);
    EXPECT_EQ(mark(), nullptr);
    test::mouse(held, QEvent::MouseMove, beside(1, 1));
    EXPECT_EQ(mark(), nullptr);
    test::mouse(held, QEvent::MouseButtonRelease, beside(1, 1));
    pass();
    EXPECT_EQ(shownNames(), (Names{"ada", "ben"}));
}

TEST_F(AccountRowsTest, aDragGoesOnWhileTheAccountsAreRead)
{
    openWith({"ada", "ben", "cyd"});
    QWidget& held = handle(0);
    test::mouse(held, QEvent::MouseButtonPress, centreOf(held));
    test::mouse(held, QEvent::MouseMove, beside(2, 1));
    found.facts[1].tokenStatus = TokenStatus::expired;
    rescan();
    pass();
    test::mouse(held, QEvent::MouseMove, beside(2, 1));
    test::mouse(held, QEvent::MouseButtonRelease, beside(2, 1));
    pass();
    EXPECT_EQ(shownNames(), (Names{"ben", "cyd", "ada"}));
}

TEST_F(AccountRowsTest, theMarkGoesWithTheRowThatIsDragged)
{
    openWith({"ada", "ben"});
    QWidget& held = handle(0);
    test::mouse(held, QEvent::MouseButtonPress, centreOf(held));
    test::mouse(held, QEvent::MouseMove, beside(1, 1));
    ASSERT_NE(mark(), nullptr);
    state.remove(account("ada"));
    pass();
    EXPECT_EQ(mark(), nullptr);
    EXPECT_EQ(shownNames(), Names{"ben"});
}

TEST_F(AccountRowsTest, theArrowKeysMoveARowAndTheFocusStaysOnIt)
{
    openWith({"ada", "ben", "cyd"});
    QWidget& ben = handle(1);
    ben.setFocus(Qt::TabFocusReason);
    const auto move = [&](int key) {
        test::key(*QApplication::focusWidget(), key);
        pass();
        EXPECT_EQ(QApplication::focusWidget(), &ben);
    };
    move(Qt::Key_Down);
    EXPECT_EQ(shownNames(), (Names{"ada", "cyd", "ben"}));
    move(Qt::Key_Down); // it is the last
    EXPECT_EQ(shownNames(), (Names{"ada", "cyd", "ben"}));
    move(Qt::Key_Up);
    move(Qt::Key_Up);
    EXPECT_EQ(shownNames(), (Names{"ben", "ada", "cyd"}));
    move(Qt::Key_Up); // it is the first
    EXPECT_EQ(shownNames(), (Names{"ben", "ada", "cyd"}));
    EXPECT_EQ(recordOnDisk("ben").order, 0);
    EXPECT_EQ(recordOnDisk("cyd").order, 2);
}

TEST_F(AccountRowsTest, theTabKeyGoesFromRowToRowHoweverTheyWereMoved)
{
    openWith({"ada", "ben", "cyd"});
    const auto order = [this] {
        Names names;
        QWidget& first = handle(0);
        first.setFocus(Qt::TabFocusReason);
        for (QWidget* at = &first; names.size() < 3;) {
            if (auto* const field = qobject_cast<QLineEdit*>(at))
                names.push_back(field->text().toStdString());
            test::key(*at, Qt::Key_Tab);
            at = QApplication::focusWidget();
        }
        return names;
    };
    EXPECT_EQ(order(), (Names{"ada", "ben", "cyd"}));
    drag(0, beside(1, 1));
    ASSERT_EQ(shownNames(), (Names{"ben", "ada", "cyd"}));
    EXPECT_EQ(order(), (Names{"ben", "ada", "cyd"}));
    add("dan");
    rescan();
    state.reorder({3}, 1);
    pass();
    ASSERT_EQ(shownNames(), (Names{"ben", "dan", "ada", "cyd"}));
    EXPECT_EQ(order(), (Names{"ben", "dan", "ada"}));
}

TEST_F(AccountRowsTest, aRowThatIsDraggedTowardsTheEdgeScrollsTheListOn)
{
    Names names;
    for (int i = 0; i < 40; ++i)
        names.push_back("account-" + std::to_string(i));
    openWith(names);
    const auto areas = test::shown<QScrollArea>(*window);
    ASSERT_EQ(areas.size(), 1U);
    QScrollBar& bar = *areas[0]->verticalScrollBar();
    ASSERT_EQ(bar.value(), 0);
    QWidget& held = handle(0);
    const QPoint below = areas[0]->mapToGlobal(QPoint(20, areas[0]->height() + 5));
    test::mouse(held, QEvent::MouseButtonPress, centreOf(held));
    for (int i = 0; i < 300 && bar.value() < bar.maximum(); ++i)
        test::mouse(held, QEvent::MouseMove, below);
    EXPECT_EQ(bar.value(), bar.maximum());
    test::mouse(held, QEvent::MouseButtonRelease, below);
    pass();
    EXPECT_EQ(state.accounts().back().displayName, "account-0");
}

} // namespace
} // namespace vellumor::accountRowsTest
