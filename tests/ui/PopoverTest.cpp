#include "ui/Popover.h"

#include "app/state/AppStateTesting.h"
#include "ui/PlainText.h"
#include "ui/PopoverView.h"

#include <QAbstractButton>
#include <QApplication>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QKeyEvent>
#include <QScreen>
#include <qtestsupport_core.h>
#include <qtestsupport_widgets.h>

namespace vellumor::popoverTest {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

struct PopoverTest : test::AppStateTesting {
    test::Names pressed;
    int closings = 0;
    QAction quit;
    Popover popover{state,
                    clock,
                    {.settings = [this] { pressed.emplace_back("settings"); },
                     .refresh = [this] { pressed.emplace_back("refresh"); },
                     .signInGuide = [this] { pressed.emplace_back("guide"); },
                     .closed = [this] { ++closings; },
                     .menu = {&quit}}};

    ~PopoverTest() override
    {
        popover.performClose();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        qunsetenv("XDG_ACTIVATION_TOKEN");
    }
    static PopoverView* view()
    {
        for (QWidget* window : QApplication::topLevelWidgets()) {
            auto* const view = qobject_cast<PopoverView*>(window);
            if (view != nullptr && view->isVisible())
                return view;
        }
        return nullptr;
    }
    void open()
    {
        popover.show(std::nullopt, {});
        ASSERT_NE(view(), nullptr);
        ASSERT_TRUE(QTest::qWaitForWindowActive(view()));
    }
    static void loseFocus()
    {
        QEvent deactivate(QEvent::WindowDeactivate);
        QCoreApplication::sendEvent(view(), &deactivate);
    }
    static bool says(const QString& text)
    {
        const auto texts = view()->findChildren<PlainText*>();
        return std::ranges::any_of(texts, [&](const PlainText* each) {
            return each->isVisible() && each->text() == text;
        });
    }
    // By way of the dialog, which takes the focus.
    static void exportTo(const QString& path)
    {
        const auto dialog = [] {
            const auto windows = QApplication::topLevelWidgets();
            const auto found = std::ranges::find_if(windows, [](const QWidget* window) {
                return window->isVisible() && qobject_cast<const QFileDialog*>(window) != nullptr;
            });
            return found == windows.end() ? nullptr : qobject_cast<QFileDialog*>(*found);
        };
        press("Export CSV");
        ASSERT_TRUE(QTest::qWaitFor([&] { return dialog() != nullptr; }, 20000));
        ASSERT_TRUE(QTest::qWaitFor([] { return view() == nullptr; }, 20000));
        emit dialog()->fileSelected(path);
        dialog()->close();
    }
    static void press(const QString& name)
    {
        for (auto* const button : view()->findChildren<QAbstractButton*>()) {
            if (button->accessibleName() == name || button->text() == name)
                return button->click();
        }
        FAIL() << name.toStdString();
    }
};

TEST_F(PopoverTest, theFirstFrameHasItsDataAndItsSize)
{
    add("ada");
    rescan();
    applyTo("ada", read(UsageSource::endpoint));
    settle();
    popover.show(std::nullopt, {});
    ASSERT_NE(view(), nullptr);
    EXPECT_TRUE(popover.isShown());
    EXPECT_TRUE(says("ada"));
    EXPECT_TRUE(says("Updated just now"));
    const QSize first = view()->size();
    for (int i = 0; i < 5; ++i)
        QCoreApplication::processEvents();
    EXPECT_EQ(view()->size(), first);
}

TEST_F(PopoverTest, itTicksOnceASecondOnlyWhileItIsOpen)
{
    settle();
    ASSERT_EQ(clock.pendingAlarms(), 0U);
    open();
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(clock.pendingAlarms(), 1U);
        EXPECT_EQ(clock.untilNextAlarm(), milliseconds(1000));
        clock.advance(seconds(1));
    }
    popover.show(std::nullopt, {}); // once more
    EXPECT_EQ(clock.pendingAlarms(), 1U);
    popover.performClose();
    EXPECT_EQ(clock.pendingAlarms(), 0U);
    EXPECT_FALSE(popover.isShown());
    open();
    loseFocus();
    EXPECT_EQ(clock.pendingAlarms(), 0U);
}

TEST_F(PopoverTest, timeAndChangesReachAnOpenPopover)
{
    add("ada");
    rescan();
    settle();
    open();
    EXPECT_TRUE(says("Updating"));
    applyTo("ada", read(UsageSource::endpoint));
    settle();
    EXPECT_TRUE(says("Updated just now"));
    clock.advance(seconds(59));
    EXPECT_TRUE(says("Updated just now"));
    clock.advance(seconds(1));
    EXPECT_TRUE(says("Updated 1m ago"));
    EXPECT_EQ(calls(), 0);
}

TEST_F(PopoverTest, aChangeWhileItIsClosedIsThereAtTheNextOpening)
{
    add("ada");
    rescan();
    settle();
    open();
    popover.performClose();
    applyTo("ada", read(UsageSource::endpoint));
    settle();
    open();
    EXPECT_TRUE(says("Updated just now"));
}

TEST_F(PopoverTest, itClosesByEscapeAndByLosingTheFocus)
{
    open();
    QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
    QCoreApplication::sendEvent(view(), &escape);
    EXPECT_EQ(view(), nullptr);
    EXPECT_FALSE(popover.isShown());
    EXPECT_FALSE(popover.wasJustClosed());
    open();
    loseFocus();
    EXPECT_EQ(view(), nullptr);
    EXPECT_FALSE(popover.isShown());
}

TEST_F(PopoverTest, theClickThatTakesTheFocusIsKnownForThreeTenthsOfASecond)
{
    EXPECT_FALSE(popover.wasJustClosed());
    open();
    QElapsedTimer since;
    since.start();
    loseFocus();
    EXPECT_TRUE(popover.wasJustClosed());
    ASSERT_TRUE(QTest::qWaitFor([&] { return !popover.wasJustClosed(); }, 5000));
    EXPECT_GE(since.elapsed(), 300);
}

TEST_F(PopoverTest, closingByHandIsNotLosingTheFocus)
{
    open();
    popover.performClose();
    EXPECT_FALSE(popover.wasJustClosed());
    popover.performClose();
    EXPECT_FALSE(popover.isShown());
    EXPECT_EQ(closings, 1);
}

// Notes the token that stands ready when a window is shown.
struct TokenWatch final : QObject {
    TokenWatch() { qApp->installEventFilter(this); }
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::Show)
            seen = qgetenv("XDG_ACTIVATION_TOKEN");
        return false;
    }
    QByteArray seen;
};

TEST_F(PopoverTest, theTokenStandsReadyForTheOpeningAndForNobodyElse)
{
    TokenWatch watch;
    popover.show(std::nullopt, "a-token");
    EXPECT_EQ(watch.seen, "a-token");
    EXPECT_FALSE(qEnvironmentVariableIsSet("XDG_ACTIVATION_TOKEN"));
    popover.performClose();
    popover.show(std::nullopt, {});
    EXPECT_EQ(watch.seen, QByteArray());
}

TEST_F(PopoverTest, itStandsBesideTheClickOnTheScreen)
{
    const QRect available = QGuiApplication::primaryScreen()->availableGeometry();
    const QRect item(available.center().x(), available.top(), 22, 22);
    popover.show(item, {});
    EXPECT_NEAR(view()->frameGeometry().center().x(), item.center().x(), 1);
    EXPECT_TRUE(available.contains(view()->frameGeometry()));
    EXPECT_LE(view()->height(), available.height() * 3 / 4);
    popover.performClose();
    popover.show(std::nullopt, {});
    EXPECT_LE(available.right() - view()->frameGeometry().right(), 8);
    EXPECT_LE(view()->frameGeometry().top() - available.top(), 8);
}

// A panel that tells nonsense.
TEST_F(PopoverTest, anItemOnNoScreenCountsAsNone)
{
    popover.show(std::nullopt, {});
    const QRect usual = view()->geometry();
    popover.performClose();
    for (const QRect& nowhere : {QRect(-50000, -50000, 22, 22), QRect(50000, 50000, 22, 22)}) {
        popover.show(nowhere, {});
        EXPECT_EQ(view()->geometry(), usual) << nowhere.x();
        popover.performClose();
    }
}

TEST_F(PopoverTest, itKeepsItsPlaceWhenItGrows)
{
    addAll({"ada", "bob"});
    rescan();
    settle();
    const QRect available = QGuiApplication::primaryScreen()->availableGeometry();
    popover.show(QRect(available.center().x(), available.top(), 22, 22), {});
    const QPoint before = view()->pos();
    const int height = view()->height();
    applyTo("ada", read(UsageSource::endpoint));
    settle();
    EXPECT_GT(view()->height(), height);
    EXPECT_EQ(view()->pos(), before);
}

TEST_F(PopoverTest, theNoticeGoesWhenItIsDismissed)
{
    rescan(); // the first one only seeds
    add("ada");
    rescan();
    settle();
    open();
    EXPECT_TRUE(says("New account discovered · ada"));
    press("Dismiss");
    settle();
    EXPECT_EQ(state.newAccountNames(), test::Names());
    EXPECT_FALSE(says("New account discovered · ada"));
}

TEST_F(PopoverTest, anAccountsHistoryTakesThePlaceOfTheListUntilBackIsPressed)
{
    addAll({"ada", "bob"});
    rescan();
    applyTo("ada", read(UsageSource::endpoint));
    settle();
    open();
    press("History for ada");
    for (int second = 0; second < 2; ++second) {
        EXPECT_TRUE(says("History"));
        EXPECT_TRUE(says("ada"));
        EXPECT_TRUE(says("Not enough history yet — collecting"));
        EXPECT_TRUE(says("Watched ~0% of the last 7 days"));
        EXPECT_FALSE(says("bob"));
        EXPECT_FALSE(says("Updated just now"));
        clock.advance(seconds(1));
    }
    press("Back");
    EXPECT_FALSE(says("History"));
    EXPECT_TRUE(says("bob"));
    EXPECT_TRUE(says("Updated just now"));
}

TEST_F(PopoverTest, aHistoryThatIsShownFollowsWhatItTells)
{
    add("ada");
    rescan();
    settle();
    open();
    press("History for ada");
    applyTo("ada", read(UsageSource::endpoint));
    clock.advance(seconds(1));
    EXPECT_TRUE(says("Not enough history yet — collecting"));
    UsageHistoryStore history(files, folders.vellumor() + "/history");
    for (int minute = -600; minute < 0; minute += 2) {
        const Instant at = clock.now() + std::chrono::minutes(minute);
        history.append(test::reading(40, at), dirOf("ada"), at);
    }
    rescan();
    settle();
    clock.advance(seconds(1));
    EXPECT_FALSE(says("Not enough history yet — collecting"));
    state.rename(account("ada"), "Ada L.");
    clock.advance(seconds(1));
    EXPECT_TRUE(says("Ada L."));
    EXPECT_FALSE(says("ada"));
}

TEST_F(PopoverTest, theHistoryOfAnAccountThatWentDoesNotComeBackByItself)
{
    addAll({"ada", "bob"});
    rescan();
    settle();
    open();
    press("History for ada");
    const Account ada = account("ada");
    state.remove(ada);
    clock.advance(seconds(1));
    EXPECT_FALSE(says("History"));
    EXPECT_TRUE(says("bob"));
    const Task<> restoring = state.restore(ada.configDir);
    settle();
    clock.advance(seconds(1));
    EXPECT_FALSE(says("History"));
    EXPECT_TRUE(says("ada"));
    EXPECT_TRUE(says("bob"));
}

TEST_F(PopoverTest, anExportThatFailsIsToldAboveTheHistoryUntilItIsDismissed)
{
    add("ada");
    rescan();
    settle();
    open();
    press("History for ada");
    exportTo("/nonexistent/folder/a.csv");
    ASSERT_TRUE(QTest::qWaitFor([] { return view() != nullptr; }, 20000));
    const auto* const told = "The export could not be written: No such file or directory";
    EXPECT_TRUE(says(told));
    EXPECT_TRUE(says("Watched ~0% of the last 7 days"));
    clock.advance(seconds(1));
    EXPECT_TRUE(says(told));
    const int height = view()->height();
    press("Dismiss");
    EXPECT_FALSE(says(told));
    EXPECT_LT(view()->height(), height);
    EXPECT_TRUE(says("Watched ~0% of the last 7 days"));
}

TEST_F(PopoverTest, aFailureThatWasSeenIsNotToldAgain)
{
    add("ada");
    rescan();
    settle();
    open();
    press("History for ada");
    exportTo("/nonexistent/folder/a.csv");
    ASSERT_TRUE(QTest::qWaitFor([] { return view() != nullptr; }, 20000));
    popover.performClose();
    open();
    EXPECT_FALSE(says("The export could not be written: No such file or directory"));
}

TEST_F(PopoverTest, theControlsAndTheMenusShortcutsReachTheProgram)
{
    open();
    press("Refresh now");
    press("Settings");
    EXPECT_EQ(pressed, (test::Names{"refresh", "settings"}));
    EXPECT_EQ(view()->actions(), QList<QAction*>{&quit});
}

} // namespace
} // namespace vellumor::popoverTest
