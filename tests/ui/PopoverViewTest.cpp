#include "ui/PopoverView.h"

#include "ui/Accessibility.h"
#include "ui/DesktopPalette.h"
#include "ui/PlainText.h"
#include "ui/UsageRow.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QApplication>
#include <QKeyEvent>
#include <QScrollArea>
#include <QScrollBar>
#include <qtestsupport_widgets.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

namespace vellumor::popoverViewTest {
namespace {

using Texts = std::vector<std::string>;

constexpr int tall = 10000;

UsageRowContent row(const std::string& title, double percent, const std::string& reset)
{
    return {title, percent,        std::to_string(std::lround(percent)) + "%",
            reset, "Resets today", false};
}

AccountSectionContent section(const std::string& name, std::size_t rows = 3)
{
    const UsageRowContent all[] = {row("Session", 62, "2h 14m"), row("Weekly", 78, "3d 6h"),
                                   row("Weekly (Opus)", 93, "3d 6h")};
    AccountSectionContent section;
    section.configDir = "/home/" + name;
    section.name = name;
    section.historyHelp = "History for " + name;
    section.rows.assign(std::begin(all), std::begin(all) + static_cast<std::ptrdiff_t>(rows));
    return section;
}

PopoverContent contentOf(std::vector<AccountSectionContent> sections)
{
    PopoverContent content;
    content.sections = std::move(sections);
    content.footer = "Updated 2m ago";
    return content;
}

PopoverContent emptyContent()
{
    PopoverContent content;
    content.hint = "Run Claude Code to sign in, then scan for accounts.";
    content.hintLink = "How to sign in to Claude Code";
    content.footer = "Updating";
    return content;
}

// Counts the widgets that are painted, and how often.
class PaintCounter final : public QObject {
public:
    std::map<QWidget*, int> painted;

    explicit PaintCounter(QWidget& window)
    {
        window.installEventFilter(this);
        for (QWidget* widget : window.findChildren<QWidget*>())
            widget->installEventFilter(this);
    }
    bool eventFilter(QObject* object, QEvent* event) override
    {
        if (event->type() == QEvent::Paint)
            ++painted[static_cast<QWidget*>(object)];
        return false;
    }
    template <typename Widget>
    [[nodiscard]] std::vector<Widget*> of() const
    {
        std::vector<Widget*> found;
        for (const auto& [widget, times] : painted) {
            if (auto* const fitting = qobject_cast<Widget*>(widget))
                found.push_back(fitting);
        }
        return found;
    }
};

struct PopoverViewTest : testing::Test {
    Texts pressed;
    PopoverView view{{.settings = [this] { pressed.emplace_back("settings"); },
                      .refresh = [this] { pressed.emplace_back("refresh"); },
                      .dismissNotice = [this] { pressed.emplace_back("dismiss"); },
                      .signInGuide = [this] { pressed.emplace_back("guide"); },
                      .history = [this](const std::string& dir) { pressed.push_back(dir); },
                      .back = [this] { pressed.emplace_back("back"); },
                      .copy = [this](const std::string& text) { pressed.push_back(text); },
                      .exportAs = [this](const std::string& kind) { pressed.push_back(kind); },
                      .close = [this] { pressed.emplace_back("close"); },
                      .deactivated = [this] { pressed.emplace_back("deactivated"); }}};

    PopoverViewTest() { Accessibility::install(); }
    ~PopoverViewTest() override { QApplication::setPalette(QPalette()); }

    void show(const PopoverContent& content, int mostHeight = tall)
    {
        view.setContent(content, mostHeight);
        view.show();
        view.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&view));
        settle();
    }
    static void settle()
    {
        for (int i = 0; i < 5; ++i)
            QCoreApplication::processEvents();
    }
    static void key(QWidget* to, int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QKeyEvent press(QEvent::KeyPress, key, modifiers);
        QCoreApplication::sendEvent(to, &press);
        QKeyEvent release(QEvent::KeyRelease, key, modifiers);
        QCoreApplication::sendEvent(to, &release);
    }
    [[nodiscard]] static std::string nameOf(QWidget* widget)
    {
        QAccessibleInterface* const seen = QAccessible::queryAccessibleInterface(widget);
        return seen == nullptr ? "" : seen->text(QAccessible::Name).toStdString();
    }
    // From top to bottom, and from left to right.
    [[nodiscard]] std::vector<QAbstractButton*> buttons() const
    {
        std::vector<QAbstractButton*> shown;
        for (auto* const button : view.findChildren<QAbstractButton*>()) {
            if (button->isVisible())
                shown.push_back(button);
        }
        std::ranges::stable_sort(shown, {}, [this](const QAbstractButton* button) {
            const QPoint at = button->mapTo(&view, QPoint());
            return std::pair(at.y(), at.x());
        });
        return shown;
    }
    [[nodiscard]] Texts buttonNames() const
    {
        Texts names;
        for (QAbstractButton* button : buttons())
            names.push_back(nameOf(button));
        return names;
    }
    // Every widget that is shown, in the window's coordinates, lies within its width.
    void expectEverythingInside() const
    {
        for (const QWidget* widget : view.findChildren<QWidget*>()) {
            if (!widget->isVisible() || widget->width() == 0)
                continue;
            const int left = widget->mapTo(&view, QPoint()).x();
            EXPECT_GE(left, 0) << widget->metaObject()->className();
            EXPECT_LE(left + widget->width(), view.width()) << widget->metaObject()->className();
        }
    }
    [[nodiscard]] const QScrollArea& list() const { return *view.findChild<QScrollArea*>(); }
    [[nodiscard]] const QWidget* textWidget(const QString& text) const
    {
        for (const PlainText* each : view.findChildren<PlainText*>()) {
            if (each->isVisible() && each->text() == text)
                return each;
        }
        return nullptr;
    }
};

TEST_F(PopoverViewTest, everyControlHasANameATooltipAndAKind)
{
    PopoverContent content = contentOf({section("ada"), section("bob", 1)});
    content.notice = "New account discovered · bob";
    show(content);
    EXPECT_EQ(buttonNames(),
              (Texts{"Dismiss", "History for ada", "History for bob", "Refresh now", "Settings"}));
    for (QAbstractButton* button : buttons()) {
        EXPECT_TRUE(button->toolTip().contains(QString::fromStdString(nameOf(button))));
        EXPECT_EQ(QAccessible::queryAccessibleInterface(button)->role(), QAccessible::Button);
        EXPECT_EQ(button->size(), QSize(24, 24));
    }
    EXPECT_EQ(nameOf(&view), "Vellumor");
}

TEST_F(PopoverViewTest, everyRowIsReadOutInOneSentence)
{
    show(contentOf({section("ada", 2)}));
    Texts names;
    for (UsageRow* shown : view.findChildren<UsageRow*>()) {
        names.push_back(nameOf(shown));
        QAccessibleInterface* const seen = QAccessible::queryAccessibleInterface(shown);
        EXPECT_EQ(seen->role(), QAccessible::StaticText);
        EXPECT_EQ(seen->text(QAccessible::Description), "Resets today");
        EXPECT_TRUE(shown->toolTip().contains("Resets today"));
    }
    EXPECT_EQ(names, (Texts{"Session 62%, 2h 14m", "Weekly 78%, 3d 6h"}));
}

TEST_F(PopoverViewTest, eachControlSaysWhatWasPressed)
{
    PopoverContent content = contentOf({section("ada"), section("bob")});
    content.notice = "New account discovered · bob";
    show(content);
    for (QAbstractButton* button : buttons())
        button->click();
    EXPECT_EQ(pressed, (Texts{"dismiss", "/home/ada", "/home/bob", "refresh", "settings"}));
    pressed.clear();
    view.setContent(emptyContent(), tall);
    settle();
    EXPECT_EQ(buttonNames(), (Texts{"How to sign in to Claude Code", "Refresh now", "Settings"}));
    EXPECT_EQ(QAccessible::queryAccessibleInterface(buttons()[0])->role(), QAccessible::Link);
    buttons()[0]->click();
    EXPECT_EQ(pressed, Texts{"guide"});
}

TEST_F(PopoverViewTest, noControlHasTheFocusAtTheStart)
{
    show(contentOf({section("ada")}));
    EXPECT_EQ(qobject_cast<QAbstractButton*>(QApplication::focusWidget()), nullptr);
    key(&view, Qt::Key_Space);
    key(&view, Qt::Key_Return);
    EXPECT_EQ(pressed, Texts());
}

TEST_F(PopoverViewTest, theTabKeyGoesFromTopToBottom)
{
    PopoverContent content = contentOf({section("ada"), section("bob")});
    content.notice = "New account discovered · bob";
    show(content);
    view.setContent(contentOf({section("ada"), section("bob"), section("cleo")}), tall);
    view.setContent(content, tall);
    settle();
    Texts order;
    for (std::size_t i = 0; i < buttons().size(); ++i) {
        QWidget* const at = QApplication::focusWidget();
        key(at == nullptr ? &view : at, Qt::Key_Tab);
        order.push_back(nameOf(QApplication::focusWidget()));
    }
    EXPECT_EQ(order, buttonNames());
}

TEST_F(PopoverViewTest, aControlWithTheFocusAnswersToTheSpaceKey)
{
    show(contentOf({section("ada")}));
    buttons()[0]->setFocus(Qt::TabFocusReason);
    key(buttons()[0], Qt::Key_Space);
    EXPECT_EQ(pressed, Texts{"/home/ada"});
}

TEST_F(PopoverViewTest, escapeClosesItWhereverTheFocusIs)
{
    show(contentOf({section("ada")}));
    key(&view, Qt::Key_Escape);
    EXPECT_EQ(pressed, Texts{"close"});
    buttons()[0]->setFocus(Qt::TabFocusReason);
    key(buttons()[0], Qt::Key_Escape);
    EXPECT_EQ(pressed, (Texts{"close", "close"}));
}

TEST_F(PopoverViewTest, onlyAWindowThatHadTheFocusCanLoseIt)
{
    view.setContent(contentOf({section("ada")}), tall);
    QEvent deactivate(QEvent::WindowDeactivate);
    QCoreApplication::sendEvent(&view, &deactivate);
    EXPECT_EQ(pressed, Texts());
    QEvent activate(QEvent::WindowActivate);
    QCoreApplication::sendEvent(&view, &activate);
    QCoreApplication::sendEvent(&view, &deactivate);
    EXPECT_EQ(pressed, Texts{"deactivated"});
}

TEST_F(PopoverViewTest, theWidthIsTheSameWhateverIsShown)
{
    show(contentOf({section("ada")}));
    const int width = view.width();
    EXPECT_NEAR(width, 350 * std::max(QFontInfo(QApplication::font()).pixelSize() / 13.0, 1.0), 12);
    AccountSectionContent loud = section(std::string(300, 'm'));
    loud.plan = std::string(300, 'w');
    loud.forecast = loud.credits = std::string(300, 'x');
    loud.note = NoteContent{std::string(300, 'n'), true};
    loud.rows[0].title = std::string(300, 't');
    loud.rows[0].percentText = std::string(300, '9');
    loud.rows[0].resetText = std::string(300, 'r');
    PopoverContent content = contentOf({loud});
    content.notice = std::string(300, 'b');
    content.footer = std::string(300, 'f');
    view.setContent(content, tall);
    settle();
    EXPECT_EQ(view.width(), width);
    expectEverythingInside();
    view.setContent(emptyContent(), tall);
    settle();
    EXPECT_EQ(view.width(), width);
    expectEverythingInside();
}

TEST_F(PopoverViewTest, aTextOfSeveralLinesHasRoomForEachOfThem)
{
    const std::string sentence = "Sign-in expired — sign in to this account in Claude Code";
    AccountSectionContent wordy = section("ada");
    wordy.forecast = wordy.credits = sentence + " " + sentence;
    wordy.note = NoteContent{sentence + " " + sentence, true};
    AccountSectionContent empty = section("bob", 0);
    empty.substitute = sentence + " " + sentence;
    PopoverContent content = contentOf({wordy, empty});
    content.notice = sentence + " " + sentence;
    show(content);
    int texts = 0;
    for (const PlainText* each : view.findChildren<PlainText*>()) {
        if (!each->isVisible() || !each->hasHeightForWidth())
            continue;
        ++texts;
        EXPECT_GT(each->heightForWidth(each->width()), QFontMetrics(each->font()).height());
        EXPECT_EQ(each->height(), each->heightForWidth(each->width()));
    }
    EXPECT_EQ(texts, 5);
}

TEST_F(PopoverViewTest, aNameOfSixtyCharactersIsWholeInItsTooltip)
{
    const std::string name = "A name that is sixty characters long and will never fit here";
    AccountSectionContent named = section(name);
    named.rows[0].title = "Weekly (a model with a long name)";
    show(contentOf({named}));
    expectEverythingInside();
    const QWidget* const shown = textWidget(QString::fromStdString(name));
    ASSERT_NE(shown, nullptr);
    EXPECT_TRUE(shown->toolTip().contains(QString::fromStdString(name)));
    EXPECT_TRUE(view.findChildren<UsageRow*>()[0]->toolTip().contains(
        "Weekly (a model with a long name)<br>Resets today"));
}

TEST_F(PopoverViewTest, markupInANameStaysText)
{
    AccountSectionContent hostile = section("<b>ada</b>");
    hostile.rows[0].title = "<i>" + std::string(60, 'x') + "</i>";
    show(contentOf({hostile}));
    EXPECT_NE(textWidget("<b>ada</b>"), nullptr);
    EXPECT_TRUE(buttons()[0]->toolTip().contains("&lt;b&gt;ada"));
    EXPECT_TRUE(view.findChildren<UsageRow*>()[0]->toolTip().contains("&lt;i&gt;xxx"));
}

TEST_F(PopoverViewTest, itIsAsHighAsItsContent)
{
    show(contentOf({section("ada", 1)}));
    const int one = view.height();
    view.setContent(contentOf({section("ada", 3)}), tall);
    EXPECT_EQ(view.height(), one + 2 * view.findChild<UsageRow*>()->height());
    view.setContent(contentOf({section("ada", 1)}), tall);
    EXPECT_EQ(view.height(), one);
    PopoverContent news = contentOf({section("ada", 1)});
    news.notice = "New account discovered · bob";
    view.setContent(news, tall);
    EXPECT_GT(view.height(), one);
    EXPECT_FALSE(list().verticalScrollBar()->isVisible());
}

TEST_F(PopoverViewTest, fourAccountsOfThreeLimitsFitASmallScreen)
{
    constexpr int most = 768 * 3 / 4;
    show(contentOf({section("ada"), section("bob"), section("cleo"), section("dan")}), most);
    EXPECT_LE(view.height(), most);
    EXPECT_FALSE(list().verticalScrollBar()->isVisible());
    EXPECT_EQ(list().verticalScrollBar()->maximum(), 0); // nothing of it is hidden
    EXPECT_GE(list().height(), 4 * 3 * view.findChild<UsageRow*>()->height());
}

TEST_F(PopoverViewTest, aThousandAccountsScrollAndTheFooterStays)
{
    std::vector<AccountSectionContent> many;
    for (int i = 0; i < 1000; ++i)
        many.push_back(section("account " + std::to_string(i), 1));
    show(contentOf(many), 600);
    EXPECT_EQ(view.height(), 600);
    EXPECT_TRUE(list().verticalScrollBar()->isVisible());
    EXPECT_GT(list().verticalScrollBar()->maximum(), 10000);
    EXPECT_EQ(list().horizontalScrollBar()->maximum(), 0);
    const QWidget* const footer = textWidget("Updated 2m ago");
    ASSERT_NE(footer, nullptr);
    const int bottom = footer->mapTo(&view, QPoint(0, footer->height())).y();
    EXPECT_LE(bottom, 600);
    EXPECT_GT(bottom, 550);
    EXPECT_LE(list().geometry().bottom(), footer->mapTo(&view, QPoint()).y());
    key(&view, Qt::Key_PageDown);
    EXPECT_GT(list().verticalScrollBar()->value(), 100);
    key(&view, Qt::Key_PageUp);
    EXPECT_EQ(list().verticalScrollBar()->value(), 0);
    key(&view, Qt::Key_Down);
    EXPECT_GT(list().verticalScrollBar()->value(), 0);
    key(&view, Qt::Key_Up);
    EXPECT_EQ(list().verticalScrollBar()->value(), 0);
}

TEST_F(PopoverViewTest, aTickWithoutAChangeRepaintsNothing)
{
    PopoverContent content = contentOf({section("ada"), section("bob")});
    content.notice = "New account discovered · bob";
    show(content);
    const PaintCounter counter(view);
    for (int i = 0; i < 3; ++i) {
        view.setContent(content, tall);
        settle();
    }
    EXPECT_TRUE(counter.painted.empty());
}

TEST_F(PopoverViewTest, aCountdownThatChangesRepaintsItsRowAlone)
{
    PopoverContent content = contentOf({section("ada"), section("bob")});
    content.notice = "New account discovered · bob";
    show(content);
    const PaintCounter counter(view);
    content.sections[1].rows[0].resetText = "2h 13m";
    view.setContent(content, tall);
    settle();
    const auto rows = counter.of<UsageRow>();
    ASSERT_EQ(rows.size(), 1U);
    EXPECT_EQ(nameOf(rows[0]), "Session 62%, 2h 13m");
    EXPECT_TRUE(counter.of<PlainText>().empty());
    EXPECT_TRUE(counter.of<QAbstractButton>().empty());
}

TEST_F(PopoverViewTest, anAgeThatChangesRepaintsTheFooterAlone)
{
    PopoverContent content = contentOf({section("ada"), section("bob")});
    content.notice = "New account discovered · bob";
    show(content);
    const PaintCounter counter(view);
    content.footer = "Updated 3m ago";
    view.setContent(content, tall);
    settle();
    const auto texts = counter.of<PlainText>();
    ASSERT_EQ(texts.size(), 1U);
    EXPECT_EQ(texts[0]->text(), "Updated 3m ago");
    EXPECT_TRUE(counter.of<UsageRow>().empty());
}

TEST_F(PopoverViewTest, whatIsNotToBeShownIsNot)
{
    AccountSectionContent full = section("ada");
    full.forecast = "↗ Weekly on pace for ~85% by reset";
    full.credits = "Usage credits · €12.50 of €50.00";
    full.note = NoteContent{"Offline — showing last update", true};
    show(contentOf({full}));
    for (const char* const text :
         {"↗ Weekly on pace for ~85% by reset", "Usage credits · €12.50 of €50.00",
          "Offline — showing last update"})
        EXPECT_NE(textWidget(text), nullptr) << text;
    AccountSectionContent bare = section("ada", 0);
    bare.isWaiting = true;
    view.setContent(contentOf({bare}), tall);
    settle();
    EXPECT_NE(textWidget("…"), nullptr);
    EXPECT_EQ(textWidget(""), nullptr);
    EXPECT_TRUE(view.findChildren<UsageRow*>().isEmpty());
    bare.isWaiting = false;
    bare.substitute = "No usage data";
    view.setContent(contentOf({bare}), tall);
    EXPECT_NE(textWidget("No usage data"), nullptr);
    EXPECT_EQ(textWidget("…"), nullptr);
}

TEST_F(PopoverViewTest, aHistoryHidesEverythingElseUntilItGoes)
{
    PopoverContent content = contentOf({section("ada")});
    show(content);
    view.setHistory(std::make_shared<HistoryContent>());
    content = contentOf({section("ada"), section("bob")}); // the time goes on
    content.notice = "New account discovered · bob";
    view.setContent(content, tall);
    settle();
    EXPECT_EQ(buttonNames(), (Texts{"Back", "Export CSV", "Export JSON"}));
    for (const char* const text : {"ada", "bob", "Updated 2m ago", "New account discovered · bob"})
        EXPECT_EQ(textWidget(text), nullptr) << text;
    view.setHistory(nullptr);
    settle();
    EXPECT_EQ(buttonNames(),
              (Texts{"Dismiss", "History for ada", "History for bob", "Refresh now", "Settings"}));
}

TEST_F(PopoverViewTest, itFollowsTheDesktopsColours)
{
    show(contentOf({section("ada")}));
    const auto ground = [this] { return view.grab().toImage().pixelColor(3, 3); };
    EXPECT_EQ(ground(), QApplication::palette().color(QPalette::Base));
    QApplication::setPalette(DesktopPalette::dark());
    settle();
    EXPECT_EQ(ground(), DesktopPalette::dark().color(QPalette::Base));
}

} // namespace
} // namespace vellumor::popoverViewTest
