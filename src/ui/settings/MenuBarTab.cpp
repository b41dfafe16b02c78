#include "ui/settings/MenuBarTab.h"

#include "ui/PlainText.h"
#include "ui/settings/SettingsMetrics.h"

#include <QPointer>
#include <QRadioButton>
#include <QStyle>
#include <QVBoxLayout>

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

constexpr int mostLines = 3;

// An ampersand alone would mark a key.
QString buttonText(const char* title)
{
    return QString::fromUtf8(title).replace(u'&', QStringLiteral("&&"));
}

} // namespace

MenuBarTab::MenuBarTab(AppState& appState)
    : m_appState(appState)
{
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(4);
    const int indent = style()->pixelMetric(QStyle::PM_ExclusiveIndicatorWidth) +
                       style()->pixelMetric(QStyle::PM_RadioButtonLabelSpacing);
    const auto addText = [&](const char* text, int left) {
        auto* const line = new PlainText(this, mostLines);
        line->setPlainText(text);
        line->setDimmed();
        line->fixWidth(SettingsMetrics::contentWidth - left);
        auto* const box = new QVBoxLayout;
        box->setContentsMargins(left, 0, 0, 8);
        box->addWidget(line);
        column->addLayout(box);
    };
    for (const Row& row : rows) {
        auto* const button = new QRadioButton(buttonText(row.title), this);
        connect(button, &QRadioButton::clicked, this, [this, row] { choose(row.choice); });
        button->setAccessibleDescription(QString::fromUtf8(row.description));
        column->addWidget(button);
        addText(row.description, indent);
        m_buttons[row.choice] = button;
    }
    addText("Manage accounts pinned to the menu bar and their order, in the Accounts tab.", 0);
    column->addStretch(1);
    m_appState.observe([self = QPointer<MenuBarTab>(this)] {
        if (self)
            self->update();
    });
    update();
}

void MenuBarTab::choose(Choice choice)
{
    m_appState.updatePreferences([choice](Preferences& preferences) {
        preferences.menuBarMode = MenuBarLabel::modeOf(choice);
        preferences.menuBarDualBars = MenuBarLabel::isDual(choice);
    });
}

void MenuBarTab::update()
{
    const Preferences& preferences = m_appState.preferences();
    m_buttons.at(MenuBarLabel::displayChoice(preferences.menuBarMode, preferences.menuBarDualBars))
        ->setChecked(true);
}

} // namespace vellumor
