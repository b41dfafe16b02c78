#include "ui/settings/MenuBarTab.h"

#include "ui/settings/SettingsTesting.h"

namespace vellumor::menuBarTabTest {
namespace {

struct MenuBarTabTest : test::SettingsTesting {
    void openMenuBar() { open(SettingsTab::menuBar); }
    // The titles of what is chosen.
    [[nodiscard]] test::Texts chosen() const
    {
        test::Texts titles;
        for (auto* const button : test::shown<QRadioButton>(*window)) {
            if (button->isChecked())
                titles.push_back(test::nameOf(button));
        }
        return titles;
    }
};

TEST_F(MenuBarTabTest, fourChoicesAreExplained)
{
    openMenuBar();
    const std::pair<const char*, const char*> table[] = {
        {"Session bars", "Thin bars for current session windows."},
        {"Session & weekly bars", "Thin bars for current session windows and thicker bars for the "
                                  "most constrained weekly windows."},
        {"Session %", "Percentage numbers for current session windows."},
        {"Session & weekly %", "Percentage numbers for current session windows and the most "
                               "constrained weekly windows."},
    };
    const auto buttons = test::shown<QRadioButton>(*window);
    ASSERT_EQ(buttons.size(), std::size(table));
    for (std::size_t i = 0; i < buttons.size(); ++i) {
        EXPECT_EQ(test::nameOf(buttons[i]), table[i].first);
        EXPECT_EQ(buttons[i]->text().replace("&&", "&"), table[i].first);
        EXPECT_EQ(buttons[i]->accessibleDescription(), table[i].second);
        EXPECT_TRUE(windowSays(table[i].second));
        EXPECT_EQ(test::roleOf(buttons[i]), QAccessible::RadioButton);
    }
    EXPECT_TRUE(
        windowSays("Manage accounts pinned to the menu bar and their order, in the Accounts tab."));
}

TEST_F(MenuBarTabTest, aChoiceIsKeptInBothOfItsParts)
{
    openMenuBar();
    EXPECT_EQ(chosen(), test::Texts{"Session bars"});
    struct Row {
        const char* title;
        MenuBarMode mode;
        bool isDual;
    };
    const Row table[] = {
        {"Session & weekly bars", MenuBarMode::bars, true},
        {"Session & weekly %", MenuBarMode::numbers, true},
        {"Session %", MenuBarMode::numbers, false},
        {"Session bars", MenuBarMode::bars, false},
        {"Session & weekly %", MenuBarMode::numbers, true},
        {"Session & weekly bars", MenuBarMode::bars, true},
    };
    int changes = 0;
    state.observe([&changes] { ++changes; });
    for (const Row& row : table) {
        changes = 0;
        pressIt(row.title);
        EXPECT_EQ(onDisk().menuBarMode, row.mode) << row.title;
        EXPECT_EQ(onDisk().menuBarDualBars, row.isDual) << row.title;
        EXPECT_EQ(state.menuBarMode(), row.mode) << row.title;
        EXPECT_EQ(chosen(), test::Texts{row.title});
        EXPECT_EQ(changes, 1); // also where the mode is the same as before
    }
}

TEST_F(MenuBarTabTest, aChangeFromElsewhereIsShown)
{
    openMenuBar();
    state.updatePreferences([](Preferences& p) { p.menuBarDualBars = true; });
    pass();
    EXPECT_EQ(chosen(), test::Texts{"Session & weekly bars"});
    state.setMenuBarMode(MenuBarMode::numbers);
    pass();
    EXPECT_EQ(chosen(), test::Texts{"Session & weekly %"});
}

} // namespace
} // namespace vellumor::menuBarTabTest
