#include "ui/settings/UsageTab.h"

#include "ui/settings/SettingsTesting.h"

namespace vellumor::usageTabTest {
namespace {

struct UsageTabTest : test::SettingsTesting {
    void openUsage() { open(SettingsTab::usage); }
    [[nodiscard]] QComboBox& interval() const
    {
        return test::named<QComboBox>(*window, "Refresh usage every");
    }
    [[nodiscard]] QCheckBox& box(const char* name) const
    {
        return test::named<QCheckBox>(*window, name);
    }
    static constexpr const char* localOnly = "Use local cache only";
    static constexpr const char* revive = "Revive expired sign-ins automatically";
};

TEST_F(UsageTabTest, itSaysWhatEachControlDoes)
{
    openUsage();
    for (const char* text :
         {"Refresh usage every",
          "Designed for up to ~2 accounts. If you add more, the refreshes will spread further "
          "apart.",
          "No accounts are currently refreshing — none has a readable sign-in.",
          "Stops all of Vellumor's usage requests. Data will be updated from Claude Code's own "
          "local cache only.",
          "When an account's sign-in expires, Vellumor runs Claude Code in the background to sign "
          "it back in so that it can keep updating its usage numbers.",
          "Claude Code location", "automatic",
          "Vellumor should find your Claude Code by itself, but if it shows “Couldn’t find Claude "
          "Code on this Mac”, specify the path to the claude command-line tool here."})
        EXPECT_TRUE(windowSays(text)) << text;
    EXPECT_EQ(interval().currentText(), "~2 minutes");
    EXPECT_EQ(interval().count(), 6);
    EXPECT_FALSE(box(localOnly).isChecked());
    EXPECT_TRUE(box(revive).isChecked());
    EXPECT_TRUE(box(localOnly).accessibleDescription().startsWith("Stops all of"));
}

TEST_F(UsageTabTest, theIntervalIsKeptAndShownAtOnce)
{
    add("ada");
    rescan();
    openUsage();
    test::choose(interval(), "~5 minutes");
    pass();
    EXPECT_EQ(onDisk().userInterval, 300);
    EXPECT_EQ(state.userInterval(), 300);
    EXPECT_TRUE(windowSays("Designed for up to ~5 accounts. If you add more, the refreshes will "
                           "spread further apart."));
    EXPECT_TRUE(windowSays("Usage of your tracked account refreshes every ~5 minutes."));
    test::choose(interval(), "~1 minute");
    pass();
    EXPECT_EQ(onDisk().userInterval, 60);
}

TEST_F(UsageTabTest, anIntervalOfAnOlderFileStaysUntilAnotherIsChosen)
{
    state.setUserInterval(90);
    openUsage();
    EXPECT_EQ(interval().currentText(), "~1 min 30s");
    EXPECT_EQ(interval().count(), 7);
    test::choose(interval(), "~2 minutes");
    pass();
    EXPECT_EQ(onDisk().userInterval, 120);
    EXPECT_EQ(interval().currentText(), "~2 minutes");
    EXPECT_EQ(interval().count(), 6);
    test::choose(interval(), "~30 minutes");
    pass();
    EXPECT_EQ(onDisk().userInterval, 1800);
}

TEST_F(UsageTabTest, theNoteFollowsTheAccountsWhileItIsSeen)
{
    addAll({"ada", "ben"});
    rescan();
    state.recomputeEffectiveInterval(clock.now());
    openUsage();
    EXPECT_TRUE(windowSays("Usage of each of your 2 tracked accounts refreshes every ~2 minutes."));
    found.facts[0].tokenStatus = TokenStatus::signedOut;
    rescan();
    state.recomputeEffectiveInterval(clock.now());
    pass();
    EXPECT_TRUE(windowSays("Usage of your active account refreshes every ~2 minutes."));
    test::expectNothingClipped(*window);
}

TEST_F(UsageTabTest, whatIsNotSeenIsMadeAnewWhenItIsSeen)
{
    openUsage();
    QCheckBox& revival = box(revive);
    window->close();
    state.updatePreferences([](Preferences& p) { p.tokenRevivalEnabled = false; });
    pass();
    EXPECT_TRUE(revival.isChecked());
    openUsage();
    EXPECT_FALSE(revival.isChecked());
}

TEST_F(UsageTabTest, readingFromTheCacheAloneIsOneEventAndOnlyWhenItIsTurnedOn)
{
    openUsage();
    pressIt(localOnly);
    EXPECT_TRUE(onDisk().localCacheOnly);
    ASSERT_EQ(recorder.captured.size(), 1U);
    EXPECT_EQ(recorder.captured[0], TelemetryEvent::switchToLocalOnly());
    pressIt(localOnly);
    EXPECT_FALSE(onDisk().localCacheOnly);
    EXPECT_EQ(recorder.captured.size(), 1U);
    state.updatePreferences([](Preferences& p) { p.localCacheOnly = true; });
    pass();
    EXPECT_TRUE(box(localOnly).isChecked());
    EXPECT_EQ(recorder.captured.size(), 1U); // somebody else's doing
}

TEST_F(UsageTabTest, revivingIsSwitchedAtOnce)
{
    openUsage();
    pressIt(revive);
    EXPECT_FALSE(onDisk().tokenRevivalEnabled);
    EXPECT_FALSE(onDisk().localCacheOnly);
    pressIt(revive);
    EXPECT_TRUE(onDisk().tokenRevivalEnabled);
}

TEST_F(UsageTabTest, theLocationIsChosenAndCleared)
{
    openUsage();
    EXPECT_FALSE(test::named<QPushButton>(*window, "Clear").isEnabled());
    pressIt("Choose");
    ASSERT_TRUE(fileChosen);
    EXPECT_FALSE(folderChosen);
    EXPECT_EQ(onDisk().claudeBinaryPath, "");
    fileChosen("/opt/bin/claude");
    pass();
    EXPECT_EQ(onDisk().claudeBinaryPath, "/opt/bin/claude");
    EXPECT_TRUE(windowSays("/opt/bin/claude"));
    EXPECT_FALSE(windowSays("automatic"));
    pressIt("Clear");
    EXPECT_EQ(onDisk().claudeBinaryPath, "");
    EXPECT_TRUE(windowSays("automatic"));
}

TEST_F(UsageTabTest, aPathThatDoesNotFitIsWholeInItsTooltip)
{
    const std::string path = "/opt/" + std::string(200, 'm') + "/claude";
    state.updatePreferences([&](Preferences& p) { p.claudeBinaryPath = path; });
    openUsage();
    const int width = window->width();
    const auto& shown = test::named<QLabel>(*window, "Claude Code location");
    EXPECT_TRUE(windowSays(path));
    for (QLabel* label : test::shown<QLabel>(*window)) {
        if (label->text().toStdString() == path) {
            EXPECT_TRUE(label->toolTip().contains(label->text()));
        }
    }
    EXPECT_TRUE(shown.isVisible());
    state.updatePreferences([](Preferences& p) { p.claudeBinaryPath = "/opt/claude"; });
    pass();
    EXPECT_EQ(window->width(), width);
}

} // namespace
} // namespace vellumor::usageTabTest
