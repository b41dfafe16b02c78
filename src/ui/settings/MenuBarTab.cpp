#include "ui/settings/MenuBarTab.h"

#include "ui/settings/SettingsForm.h"
#include "ui/settings/ShowChecked.h"

#include <QRadioButton>

#include <array>

namespace vellumor {

namespace {

using Choice = MenuBarLabel::MenuBarDisplayChoice;

struct Row {
    Choice choice;
    const char* title;
    const char* description;
};
constexpr std::array rows = {
    Row{Choice::sessionBars, "Session bars", "Thin bars for current session windows."},
    Row{Choice::dualBars, "Session & weekly bars",
        "Thin bars for current session windows and thicker bars for the most constrained weekly "
        "windows."},
    Row{Choice::sessionNumbers, "Session %", "Percentage numbers for current session windows."},
    Row{Choice::dualNumbers, "Session & weekly %",
        "Percentage numbers for current session windows and the most constrained weekly windows."},
};

} // namespace

MenuBarTab::MenuBarTab(AppState& appState)
    : SettingsPage(appState)
{
    SettingsForm form(this, {});
    for (const Row& row : rows) {
        auto* const button = new QRadioButton(buttonText(row.title), this);
        connect(button, &QRadioButton::toggled, this, [this, row](bool isOn) {
            if (isOn)
                choose(row.choice);
        });
        button->setAccessibleName(QString::fromUtf8(row.title));
        button->setAccessibleDescription(QString::fromUtf8(row.description));
        form.add("", button);
        form.help(*button, row.description);
        form.gap();
        m_buttons[row.choice] = button;
    }
    form.section();
    form.note("Manage accounts pinned to the menu bar and their order, in the Accounts tab.");
    form.end();
}

void MenuBarTab::choose(Choice choice)
{
    m_appState.updatePreferences([choice](Preferences& preferences) {
        preferences.menuBarMode = MenuBarLabel::modeOf(choice);
        preferences.menuBarDualBars = MenuBarLabel::isDual(choice);
    });
}

void MenuBarTab::refresh()
{
    const Preferences& preferences = m_appState.preferences();
    showChecked(*m_buttons.at(MenuBarLabel::displayChoice(preferences.menuBarMode,
                                                          preferences.menuBarDualBars)),
                true);
}

} // namespace vellumor
