#include "ui/settings/SettingsWindow.h"

#include "ui/DesktopPalette.h"
#include "ui/Theme.h"
#include "ui/settings/SettingsTesting.h"
#include "ui/settings/TabBarButton.h"

#include <QScrollBar>
#include <QSpinBox>

#include <set>

namespace vellumor::settingsWindowTest {
namespace {

using test::Names;

constexpr const char* longName = "A name that is sixty characters long and will never fit here";

struct SettingsWindowTest : test::SettingsTesting {
    // Everything that the tabs can show at once.
    void fill()
    {
        add("ada");
        add("ben", TokenStatus::notFound);
        add("cyd", TokenStatus::needsApproval);
        add("dan", TokenStatus::signedOut);
        add("eve");
        rescan();
        state.rename(account("cyd"), longName);
        state.setTracked(id("dan"), false);
        state.remove(account("eve"));
        state.updatePreferences([this](Preferences& p) {
            p.notificationsEnabled = true;
            p.notifySessionClosing = true;
            p.claudeBinaryPath = "/opt/claude";
            p.customThresholds = {{id("ada"), 60.0}};
        });
        CrashDigest crash;
        crash.signature = "0123abcd";
        crash.fileName = "Vellumor-2026-03-01-093000.ips";
        facts.recentCrashes = {crash, crash};
        update = {GeneralModel::Update::Kind::available, "1.2.3", "https://example.org/1", {}};
        loginError = "Read-only file system";
        left = {"Vellumor"};
        waitFor(general->setLaunchAtLogin(true));
        waitFor(general->checkForUpdates());
        waitFor(general->removeAllData());
        done.clear();
    }
    [[nodiscard]] std::vector<TabBarButton*> tabs() const
    {
        return test::shown<TabBarButton>(*window);
    }
    // Some of a widget's own: the field of a list, the arrows of a number.
    static bool isPartOfAnother(const QWidget& widget)
    {
        return qobject_cast<QComboBox*>(widget.parentWidget()) != nullptr ||
               qobject_cast<QSpinBox*>(widget.parentWidget()) != nullptr;
    }
    // The edges of what is drawn are mixed with their ground.
    static bool isNear(const QColor& found, const QColor& expected)
    {
        return std::abs(found.red() - expected.red()) < 40 &&
               std::abs(found.green() - expected.green()) < 40 &&
               std::abs(found.blue() - expected.blue()) < 40;
    }
    [[nodiscard]] std::vector<QWidget*> controls() const
    {
        std::vector<QWidget*> all;
        for (QWidget* const widget : test::shown<QWidget>(*window)) {
            if ((widget->focusPolicy() & Qt::TabFocus) != 0 && widget->isEnabled() &&
                !isPartOfAnother(*widget) && qobject_cast<QScrollArea*>(widget) == nullptr)
                all.push_back(widget);
        }
        return all;
    }
};

TEST_F(SettingsWindowTest, sevenTabsStandInARow)
{
    open(SettingsTab::accounts);
    Names names;
    std::set<int> tops;
    for (TabBarButton* tab : tabs()) {
        names.push_back(test::nameOf(tab));
        tops.insert(tab->y());
        EXPECT_EQ(test::roleOf(tab), QAccessible::PageTab);
    }
    EXPECT_EQ(names, (Names{"Accounts", "Usage", "Menu Bar", "Notifications", "Privacy", "General",
                            "About"}));
    EXPECT_EQ(tops.size(), 1U);
}

TEST_F(SettingsWindowTest, aClickOnATabShowsItsPageAlone)
{
    const std::pair<const char*, const char*> table[] = {
        {"Usage", "Claude Code location"},
        {"Menu Bar",
         "Manage accounts pinned to the menu bar and their order, in the Accounts tab."},
        {"Notifications", "Usage thresholds"},
        {"Privacy", "Anonymous analytics ID"},
        {"General", "Removes everything Vellumor stores on this Mac. Claude Code's own data will "
                    "remain untouched."},
        {"About", "Report a problem"},
        {"Accounts", "Untrack accounts to hide them and to stop refreshing their usage."},
    };
    open(SettingsTab::accounts);
    for (const auto& [tab, text] : table) {
        EXPECT_FALSE(windowSays(text)) << text;
        for (TabBarButton* button : tabs()) {
            if (test::nameOf(button) == tab)
                button->click();
        }
        pass();
        for (const auto& [other, otherText] : table)
            EXPECT_EQ(windowSays(otherText), std::string(other) == tab) << tab << ": " << otherText;
        for (TabBarButton* button : tabs()) {
            EXPECT_EQ(button->isChecked(), test::nameOf(button) == tab);
            EXPECT_EQ(QAccessible::queryAccessibleInterface(button)->state().selected,
                      test::nameOf(button) == tab);
        }
    }
}

TEST_F(SettingsWindowTest, itOpensWithTheFocusOnNoControl)
{
    open(SettingsTab::usage);
    test::key(*QApplication::focusWidget(), Qt::Key_Space);
    test::key(*QApplication::focusWidget(), Qt::Key_Return);
    pass();
    EXPECT_EQ(onDisk(), Preferences{});
    EXPECT_TRUE(window->isVisible());
}

TEST_F(SettingsWindowTest, closingItKeepsItAndItsTab)
{
    open(SettingsTab::privacy);
    window->close();
    EXPECT_FALSE(window->isVisible());
    window->bringToFront();
    pass();
    EXPECT_TRUE(windowSays("Anonymous analytics ID"));
}

TEST_F(SettingsWindowTest, aMinimizedWindowComesBackWhenItIsAskedFor)
{
    open(SettingsTab::usage);
    window->showMinimized();
    pass();
    window->bringToFront();
    pass();
    EXPECT_FALSE(window->isMinimized());
}

TEST_F(SettingsWindowTest, everyControlIsReachedWithTheTabKeyInReadingOrder)
{
    fill();
    for (const SettingsTab tab : allSettingsTabs) {
        SCOPED_TRACE(std::string(title(tab)));
        open(tab);
        auto expected = controls();
        // Of choices and of the tabs the chosen one alone is in the way; the arrow keys do the
        // rest.
        std::erase_if(expected, [](QWidget* widget) {
            const auto* const choice = qobject_cast<QAbstractButton*>(widget);
            const bool isOneOfMany = qobject_cast<QRadioButton*>(widget) != nullptr ||
                                     qobject_cast<TabBarButton*>(widget) != nullptr;
            return isOneOfMany && !choice->isChecked();
        });
        ASSERT_FALSE(expected.empty());
        std::vector<QWidget*> order;
        expected.front()->setFocus(Qt::TabFocusReason);
        for (QWidget* at = expected.front(); order.size() < expected.size();) {
            order.push_back(at);
            test::key(*at, Qt::Key_Tab);
            at = QApplication::focusWidget();
            ASSERT_NE(at, nullptr);
        }
        for (std::size_t i = 0; i < order.size(); ++i)
            EXPECT_EQ(order[i], expected[i])
                << i << ": " << test::nameOf(order[i]) << " is not " << test::nameOf(expected[i]);
    }
}

TEST_F(SettingsWindowTest, theArrowKeysGoFromTabToTab)
{
    open(SettingsTab::accounts);
    tabs()[0]->setFocus(Qt::TabFocusReason);
    for (const char* text : {"Claude Code location", "Session bars", "Usage thresholds"}) {
        test::key(*QApplication::focusWidget(), Qt::Key_Right);
        pass();
        EXPECT_TRUE(test::isShown(*window, text)) << text;
    }
    test::key(*QApplication::focusWidget(), Qt::Key_Left);
    pass();
    EXPECT_TRUE(test::isShown(*window, "Session bars"));
}

TEST_F(SettingsWindowTest, everyControlHasANameForAScreenReader)
{
    fill();
    for (const SettingsTab tab : allSettingsTabs) {
        SCOPED_TRACE(std::string(title(tab)));
        open(tab);
        for (QWidget* const control : controls()) {
            const bool isNamed =
                !test::nameOf(control).empty() && !control->accessibleName().isEmpty();
            const auto* const button = qobject_cast<QAbstractButton*>(control);
            EXPECT_TRUE(isNamed || (button != nullptr && !button->text().isEmpty()))
                << control->metaObject()->className();
            EXPECT_NE(test::roleOf(control), QAccessible::NoRole);
            EXPECT_NE(test::roleOf(control), QAccessible::Client) << test::nameOf(control);
        }
    }
}

TEST_F(SettingsWindowTest, noTextIsClippedAtAnySizeOfTheFont)
{
    fill();
    for (const double scale : {1.0, 1.25, 1.5}) {
        const test::FontScale font(scale);
        window.reset();
        for (const SettingsTab tab : allSettingsTabs) {
            SCOPED_TRACE(std::string(title(tab)) + " at " + std::to_string(scale));
            open(tab);
            test::expectNothingClipped(*window);
            for (TabBarButton* each : tabs())
                EXPECT_GE(each->width(), each->sizeHint().width());
        }
    }
}

TEST_F(SettingsWindowTest, itIsAsWideOnEveryTabAndAsHighAsItsPage)
{
    fill();
    std::set<int> widths;
    std::set<int> heights;
    for (const SettingsTab tab : allSettingsTabs) {
        SCOPED_TRACE(std::string(title(tab)));
        open(tab);
        widths.insert(window->width());
        heights.insert(window->height());
        EXPECT_LE(window->height(), window->screen()->availableGeometry().height());
        EXPECT_EQ(window->size(), window->sizeHint());
    }
    EXPECT_EQ(widths.size(), 1U);
    EXPECT_GT(heights.size(), 1U);
}

TEST_F(SettingsWindowTest, nothingScrollsWithAFewAccounts)
{
    fill();
    for (const SettingsTab tab : allSettingsTabs) {
        open(tab);
        EXPECT_EQ(test::shown<QScrollBar>(*window).size(), 0U) << title(tab);
    }
}

TEST_F(SettingsWindowTest, labelsEndWhereTheirControlsBegin)
{
    open(SettingsTab::usage);
    const auto& label = test::named<QLabel>(*window, "Refresh usage every");
    const auto& second = test::named<QLabel>(*window, "Claude Code location");
    const auto right = [this](const QWidget& widget) {
        return widget.mapTo(&*window, QPoint(widget.width(), 0)).x();
    };
    const auto leftOf = [this](const QWidget& widget) {
        return widget.mapTo(&*window, QPoint()).x();
    };
    EXPECT_EQ(right(label), right(second));
    const int edge = leftOf(test::named<QComboBox>(*window, "Refresh usage every"));
    EXPECT_GT(edge, right(label));
    EXPECT_EQ(leftOf(test::named<QCheckBox>(*window, "Use local cache only")), edge);
    EXPECT_EQ(leftOf(test::named<QCheckBox>(*window, "Revive expired sign-ins automatically")),
              edge);
    for (const QLabel* each : test::shown<QLabel>(*window)) {
        if (each->text().startsWith("Designed for")) {
            EXPECT_EQ(leftOf(*each), edge);
        }
    }
}

TEST_F(SettingsWindowTest, whatIsDrawnFollowsTheDesktopsColours)
{
    const auto before = QApplication::palette();
    fill();
    const std::pair<SettingsTab, const char*> drawn[] = {{SettingsTab::about, "Ostrelline"},
                                                         {SettingsTab::accounts, "More actions"}};
    for (const auto& [tab, name] : drawn) {
        QApplication::setPalette(before);
        open(tab);
        QApplication::setPalette(DesktopPalette::dark());
        pass();
        const QImage image = test::named<QAbstractButton>(*window, name).grab().toImage();
        const QColor expected = tab == SettingsTab::about
                                    ? Theme::of(DesktopPalette::dark()).link
                                    : DesktopPalette::dark().color(QPalette::WindowText);
        bool isThere = false;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x)
                isThere = isThere || isNear(image.pixelColor(x, y), expected);
        }
        EXPECT_TRUE(isThere) << name;
    }
    QApplication::setPalette(before);
}

} // namespace
} // namespace vellumor::settingsWindowTest
