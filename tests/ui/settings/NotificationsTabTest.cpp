#include "ui/settings/NotificationsTab.h"

#include "ui/settings/SettingsTesting.h"

#include <QSpinBox>

namespace vellumor::notificationsTabTest {
namespace {

using Field = bool Preferences::*;
using Authorization = Notifications::Authorization;

// Answers when it is told to.
struct SlowNotifications final : Notifications {
    std::vector<std::function<void(Authorization)>> waiting;
    void deliver(const std::string&, const std::string&) override {}
    void requestAuthorization(std::function<void(Authorization)> then) override
    {
        waiting.push_back(std::move(then));
    }
    void onOpen(std::function<void(const std::string&)>) override {}
};

struct NotificationsTabTest : test::SettingsTesting {
    void openNotifications(bool areOn = true)
    {
        state.updatePreferences([areOn](Preferences& p) { p.notificationsEnabled = areOn; });
        open(SettingsTab::notifications);
    }
    [[nodiscard]] QCheckBox& box(const std::string& name) const
    {
        return test::named<QCheckBox>(*window, name);
    }
    [[nodiscard]] QComboBox& lead() const
    {
        const auto boxes = test::shown<QComboBox>(*window);
        if (boxes.size() != 1)
            throw std::runtime_error("there is not one list");
        return *boxes[0];
    }
    [[nodiscard]] QSpinBox& percentOf(const std::string& name) const
    {
        for (auto* const percent : test::shown<QSpinBox>(*window)) {
            if (percent->accessibleName().contains(QString::fromStdString(name)))
                return *percent;
        }
        throw std::runtime_error("no percent of " + name);
    }
    [[nodiscard]] double custom(const std::string& name) const
    {
        const auto thresholds = onDisk().customThresholds;
        const auto its = thresholds.find(id(name));
        return its == thresholds.end() ? 0.0 : its->second;
    }
    static constexpr const char* master = "Enable notifications";
    static constexpr const char* denied =
        "macOS denied notifications for Vellumor. Turn them on in System Settings → Notifications, "
        "then try again.";
};

TEST_F(NotificationsTabTest, itSaysWhatEachControlDoes)
{
    openNotifications();
    for (const char* text :
         {"Usage thresholds", "Session", "Weekly", "At 50%", "At 90%", "Limit reached",
          "Weekly covers every weekly window, including model-scoped ones.", "Other events",
          "When a session or weekly window resets and usage returns to zero.",
          "Based on your current burn rate.", "(notify", "before it closes)",
          "Custom usage thresholds"})
        EXPECT_TRUE(windowSays(text)) << text;
    for (const char* name : {master, "Usage window resets", "On pace to hit a weekly window limit",
                             "On pace to hit a session window limit", "Spending usage credits",
                             "Session window closes soon"})
        EXPECT_EQ(test::roleOf(&box(name)), QAccessible::CheckBox) << name;
    EXPECT_FALSE(windowSays(denied));
}

TEST_F(NotificationsTabTest, theTableIsAGrid)
{
    openNotifications();
    const auto centre = [this](const char* text) {
        const auto& label = test::named<QLabel>(*window, text);
        return label.mapTo(&*window, label.rect().center());
    };
    for (const char* column : {"At 50%", "At 90%", "Limit reached"}) {
        for (const char* row : {"Session", "Weekly"}) {
            const auto& cell = box(std::string(row) + ": " + column);
            const QPoint at = cell.mapTo(&*window, cell.rect().center());
            EXPECT_NEAR(at.x(), centre(column).x(), 1) << row << column;
            EXPECT_NEAR(at.y(), centre(row).y(), 3) << row << column;
        }
    }
}

TEST_F(NotificationsTabTest, eachSwitchIsKeptAndNoOther)
{
    const std::pair<const char*, Field> table[] = {
        {"Session: At 50%", &Preferences::notifySession50},
        {"Session: At 90%", &Preferences::notifySession90},
        {"Session: Limit reached", &Preferences::notifySessionLimit},
        {"Weekly: At 50%", &Preferences::notifyWeekly50},
        {"Weekly: At 90%", &Preferences::notifyWeekly90},
        {"Weekly: Limit reached", &Preferences::notifyWeeklyLimit},
        {"Usage window resets", &Preferences::notifyQuotaReset},
        {"On pace to hit a weekly window limit", &Preferences::notifyProjectedWeekly},
        {"On pace to hit a session window limit", &Preferences::notifyProjectedSession},
        {"Spending usage credits", &Preferences::notifyCreditBurn},
        {"Session window closes soon", &Preferences::notifySessionClosing},
    };
    openNotifications();
    for (const auto& [name, field] : table) {
        SCOPED_TRACE(name);
        Preferences expected = onDisk();
        EXPECT_EQ(box(name).isChecked(), expected.*field);
        expected.*field = !(expected.*field);
        pressIt(name);
        EXPECT_EQ(onDisk(), expected);
        EXPECT_EQ(box(name).isChecked(), expected.*field);
    }
}

TEST_F(NotificationsTabTest, theyAreTurnedOnWhereTheDesktopShowsThem)
{
    openNotifications(false);
    pressIt(master);
    EXPECT_TRUE(onDisk().notificationsEnabled);
    EXPECT_TRUE(box(master).isChecked());
    EXPECT_FALSE(windowSays(denied));
    pressIt(master);
    EXPECT_FALSE(onDisk().notificationsEnabled);
    EXPECT_FALSE(box(master).isChecked());
}

TEST_F(NotificationsTabTest, whereTheDesktopShowsNoneTheyStayOffAndItSaysSo)
{
    desktopNotifications.authorization = Authorization::denied;
    openNotifications(false);
    pressIt(master);
    EXPECT_FALSE(box(master).isChecked());
    EXPECT_FALSE(onDisk().notificationsEnabled);
    EXPECT_TRUE(windowSays(denied));
    test::expectNothingClipped(*window);
    desktopNotifications.authorization = Authorization::authorized;
    pressIt(master);
    EXPECT_TRUE(onDisk().notificationsEnabled);
    EXPECT_FALSE(windowSays(denied));
}

TEST_F(NotificationsTabTest, theyAreOffUntilTheDesktopHasAnswered)
{
    SlowNotifications slow;
    NotificationsTab tab(state, slow);
    tab.show();
    pass();
    test::press(tab, master);
    pass();
    ASSERT_EQ(slow.waiting.size(), 1U);
    EXPECT_FALSE(test::named<QCheckBox>(tab, master).isChecked());
    EXPECT_FALSE(state.preferences().notificationsEnabled);
    slow.waiting[0](Authorization::authorized);
    pass();
    EXPECT_TRUE(test::named<QCheckBox>(tab, master).isChecked());
    EXPECT_TRUE(onDisk().notificationsEnabled);
}

TEST_F(NotificationsTabTest, anAnswerThatNobodyWaitsForAnyMoreIsLost)
{
    SlowNotifications slow;
    {
        NotificationsTab tab(state, slow);
        tab.show();
        pass();
        test::press(tab, master);
    }
    ASSERT_EQ(slow.waiting.size(), 1U);
    slow.waiting[0](Authorization::authorized);
    pass();
    EXPECT_FALSE(state.preferences().notificationsEnabled);
}

TEST_F(NotificationsTabTest, theLeadTimeIsChosen)
{
    state.updatePreferences([](Preferences& p) { p.notifySessionClosing = true; });
    openNotifications();
    EXPECT_EQ(lead().currentText(), "30 min");
    EXPECT_EQ(lead().count(), 4);
    test::choose(lead(), "90 min");
    pass();
    EXPECT_EQ(onDisk().sessionClosingLeadMinutes, 90);
    test::choose(lead(), "15 min");
    pass();
    EXPECT_EQ(onDisk().sessionClosingLeadMinutes, 15);
}

TEST_F(NotificationsTabTest, aLeadTimeOfAnOlderFileIsAFifthChoice)
{
    state.updatePreferences([](Preferences& p) {
        p.notifySessionClosing = true;
        p.sessionClosingLeadMinutes = 45;
    });
    openNotifications();
    EXPECT_EQ(lead().currentText(), "45 min");
    EXPECT_EQ(lead().count(), 5);
    EXPECT_EQ(lead().itemText(2), "45 min");
    test::choose(lead(), "60 min");
    pass();
    EXPECT_EQ(onDisk().sessionClosingLeadMinutes, 60);
    EXPECT_EQ(lead().currentText(), "60 min");
    EXPECT_EQ(lead().count(), 4);
}

TEST_F(NotificationsTabTest, theLeadTimeStandsInItsSentenceUnderItsSwitch)
{
    openNotifications();
    const auto middle = [this](QWidget& widget) {
        return widget.mapTo(&*window, widget.rect().center()).y();
    };
    auto& before = test::named<QLabel>(*window, "(notify");
    auto& behind = test::named<QLabel>(*window, "before it closes)");
    const int line = middle(lead());
    EXPECT_GT(line, middle(box("Session window closes soon")));
    EXPECT_NEAR(middle(before), line, 3);
    EXPECT_NEAR(middle(behind), line, 3);
    const auto leftOf = [this](QWidget& widget) { return widget.mapTo(&*window, QPoint()).x(); };
    EXPECT_LT(leftOf(before), leftOf(lead()));
    EXPECT_LT(leftOf(lead()), leftOf(behind));
}

TEST_F(NotificationsTabTest, everyTrackedAccountMayHaveAThresholdOfItsOwn)
{
    addAll({"ada", "ben", "cyd"});
    rescan();
    state.setTracked(id("ben"), false);
    openNotifications();
    EXPECT_FALSE(test::isShown(*window, "ben"));
    EXPECT_FALSE(percentOf("ada").isEnabled());
    pressIt("ada");
    const int usual = percentOf("ada").value();
    EXPECT_EQ(custom("ada"), usual);
    EXPECT_TRUE(percentOf("ada").isEnabled());
    EXPECT_EQ(percentOf("ada").text().toStdString(), std::to_string(usual) + "%");
    EXPECT_EQ(onDisk().customThresholds.size(), 1U);
    test::key(percentOf("ada"), Qt::Key_Up);
    pass();
    EXPECT_EQ(custom("ada"), usual + 1);
    pressIt("cyd");
    EXPECT_EQ(onDisk().customThresholds.size(), 2U);
    pressIt("ada");
    EXPECT_EQ(custom("ada"), 0.0);
    EXPECT_EQ(onDisk().customThresholds.size(), 1U);
    EXPECT_FALSE(percentOf("ada").isEnabled());
}

TEST_F(NotificationsTabTest, theThresholdsHaveTheirRoomAtOnce)
{
    addAll({"ada", "ben"});
    rescan();
    open(SettingsTab::usage);
    window->select(SettingsTab::notifications); // and nothing has passed since
    const auto* const area = window->findChild<NotificationsTab*>()->findChild<QScrollArea*>();
    ASSERT_NE(area, nullptr);
    EXPECT_GE(area->maximumHeight(), 2 * QSpinBox().sizeHint().height());
}

TEST_F(NotificationsTabTest, aThresholdIsBetweenOneAndNinetyNine)
{
    add("ada");
    rescan();
    state.updatePreferences([this](Preferences& p) { p.customThresholds[id("ada")] = 99; });
    openNotifications();
    EXPECT_EQ(percentOf("ada").value(), 99);
    test::key(percentOf("ada"), Qt::Key_Up);
    pass();
    EXPECT_EQ(custom("ada"), 99);
    state.updatePreferences([this](Preferences& p) { p.customThresholds[id("ada")] = 1; });
    pass();
    EXPECT_EQ(percentOf("ada").value(), 1);
    test::key(percentOf("ada"), Qt::Key_Down);
    pass();
    EXPECT_EQ(custom("ada"), 1);
}

TEST_F(NotificationsTabTest, aThresholdThatIsTypedIsKeptWhole)
{
    add("ada");
    rescan();
    state.updatePreferences([this](Preferences& p) { p.customThresholds[id("ada")] = 50; });
    openNotifications();
    QSpinBox& percent = percentOf("ada");
    percent.setFocus(Qt::TabFocusReason);
    percent.selectAll();
    test::key(percent, Qt::Key_8, "8");
    pass();
    EXPECT_EQ(custom("ada"), 50); // not yet
    state.setPinned(id("ada"), false);
    pass(); // a refresh in the middle of it
    test::key(percent, Qt::Key_3, "3");
    test::key(percent, Qt::Key_Return);
    pass();
    EXPECT_EQ(custom("ada"), 83);
}

TEST_F(NotificationsTabTest, lookingAtAThresholdChangesNothing)
{
    add("ada");
    rescan();
    state.updatePreferences([this](Preferences& p) { p.customThresholds[id("ada")] = 62.5; });
    openNotifications();
    window->select(SettingsTab::usage);
    window->select(SettingsTab::notifications);
    pass();
    EXPECT_EQ(custom("ada"), 62.5);
}

TEST_F(NotificationsTabTest, theThresholdsFollowTheAccounts)
{
    addAll({"ada", "ben"});
    rescan();
    openNotifications();
    state.rename(account("ada"), "Work & <b>play</b>");
    state.reorder({1}, 0);
    pass();
    test::Texts names;
    for (QCheckBox* each : test::shown<QCheckBox>(*window)) {
        if (each->accessibleName() == "ben" || each->accessibleName().startsWith("Work"))
            names.push_back(each->accessibleName().toStdString());
    }
    EXPECT_EQ(names, (test::Texts{"ben", "Work & <b>play</b>"}));
    EXPECT_EQ(box("Work & <b>play</b>").text(), "Work && <b>play</b>");
    box("ben").setFocus(Qt::TabFocusReason);
    test::key(box("ben"), Qt::Key_Tab);
    EXPECT_EQ(QApplication::focusWidget(), &box("Work & <b>play</b>"));
    state.remove(account("ben"));
    pass();
    EXPECT_FALSE(test::isShown(*window, "ben"));
    EXPECT_EQ(test::shown<QSpinBox>(*window).size(), 1U);
}

TEST_F(NotificationsTabTest, aChangeFromElsewhereIsShown)
{
    openNotifications();
    EXPECT_FALSE(box("Usage window resets").isChecked());
    state.updatePreferences([](Preferences& p) {
        p.notifyQuotaReset = true;
        p.notificationsEnabled = false;
    });
    pass();
    EXPECT_TRUE(box("Usage window resets").isChecked());
    EXPECT_FALSE(box(master).isChecked());
}

} // namespace
} // namespace vellumor::notificationsTabTest
