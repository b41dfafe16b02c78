#include "app/state/AppState.h"

#include "app/state/AppStateTesting.h"
#include "support/FileState.h"

namespace vellumor::appStateSettingsTest {
namespace {

using test::Names;

struct AppStateSettingsTest : test::AppStateTesting {
    std::string preferencesFile = folders.vellumor() + "/preferences.json";

    // What stands behind each id in the files of the accounts.
    [[nodiscard]] std::map<std::string, int> orders() const
    {
        std::map<std::string, int> orders;
        for (const auto& [dir, record] : store.records())
            orders[record.name] = record.order;
        return orders;
    }
};

TEST_F(AppStateSettingsTest, aNameIsTrimmedAndABlankOneIsNone)
{
    add("ada");
    rescan();
    state.rename(state.accounts()[0], "  ");
    EXPECT_EQ(state.accounts()[0].displayName, "ada");
    state.rename(state.accounts()[0], "  Work \n");
    EXPECT_EQ(state.accounts()[0].displayName, "Work");
}

// The shared file speaks first in a scan, and still said the old name at the one before.
TEST_F(AppStateSettingsTest, whatTheUserChoosesHoldsAtOnceAndAfterEveryScan)
{
    addAll({"ada", "ben"});
    rescan();
    rescan();
    state.rename(account("ada"), "Work");
    EXPECT_EQ(namesOf(state.accounts()), (Names{"Work", "ben"}));
    state.reorder({1}, 0);
    EXPECT_EQ(namesOf(state.accounts()), (Names{"ben", "Work"}));
    state.setPinned(id("ben"), false);
    EXPECT_FALSE(account("ben").pinned);
    rescan();
    EXPECT_EQ(namesOf(state.accounts()), (Names{"ben", "Work"}));
    EXPECT_FALSE(account("ben").pinned);
    EXPECT_EQ(sharedAccounts.load().at(dirOf("ada")).name, "Work");
}

TEST_F(AppStateSettingsTest, anAccountThatIsNotTrackedIsNotPolledAndNoScanIsMadeForIt)
{
    add("ada");
    rescan();
    state.setTracked(id("ada"), false);
    EXPECT_EQ(pollable(), Names());
    state.setTracked(id("ada"), true);
    EXPECT_EQ(pollable(), Names{"ada"});
    EXPECT_EQ(scans, 1);
}

TEST_F(AppStateSettingsTest, hidingTakesEffectWithoutAScan)
{
    addAll({"ada", "ben"});
    rescan();
    applyTo("ada", read(UsageSource::endpoint));
    const Account hidden = account("ada");
    state.remove(hidden);
    EXPECT_EQ(namesOf(state.accounts()), Names{"ben"});
    EXPECT_EQ(state.state(hidden.id), nullptr);
    EXPECT_TRUE(state.isRemoved(hidden.configDir));
    EXPECT_TRUE(state.isRemoved("~/.claude-ada"));
    EXPECT_FALSE(state.isRemoved(dirOf("ben")));
    EXPECT_EQ(scans, 1);
}

TEST_F(AppStateSettingsTest, anotherServiceIsLookedUpAtOnce)
{
    add("ada");
    rescan();
    EXPECT_EQ(account("ada").resolvedService, "Claude Code-credentials-ada");
    waitFor(state.setServiceOverride(id("ada"), "Mine"));
    EXPECT_EQ(scans, 2);
    EXPECT_EQ(asked.back().overrides.at(dirOf("ada")), "Mine");
    EXPECT_EQ(account("ada").resolvedService, "Mine");
    EXPECT_EQ(account("ada").keychainServiceOverride, "Mine");
    waitFor(state.setServiceOverride(id("ada"), " "));
    EXPECT_TRUE(asked.back().overrides.empty());
    EXPECT_EQ(account("ada").resolvedService, "Claude Code-credentials-ada");
}

TEST_F(AppStateSettingsTest, aDirectoryThatTheUserTypesIsLookedForAtOnce)
{
    waitFor(state.upsertManual("~/elsewhere", "Mine"));
    EXPECT_EQ(asked.back().knownDirs, Names{home.file("elsewhere")});
    EXPECT_EQ(asked.back().overrides.at(home.file("elsewhere")), "Mine");
}

TEST_F(AppStateSettingsTest, anAccountIsMovedAmongAllOfThemTrackedOrNot)
{
    addAll({"ada", "ben", "cal", "dot"});
    rescan();
    state.setTracked(id("ben"), false);
    state.setTracked(id("dot"), false);
    state.reorder({3}, 1); // the one that is not tracked
    EXPECT_EQ(namesOf(state.accounts()), (Names{"ada", "dot", "ben", "cal"}));
    EXPECT_EQ(orders(),
              (std::map<std::string, int>{{"ada", 0}, {"dot", 1}, {"ben", 2}, {"cal", 3}}));
    state.reorder({0, 2}, 4);
    EXPECT_EQ(namesOf(state.accounts()), (Names{"dot", "cal", "ada", "ben"}));
    EXPECT_EQ(pollable(), (Names{"cal", "ada"}));
    EXPECT_EQ(scans, 1);
}

TEST_F(AppStateSettingsTest, aSettingIsSavedAndShownAsItWasKept)
{
    addAll({"ada", "ben", "cal"});
    rescan();
    state.updatePreferences([](Preferences& changed) {
        changed.userInterval = 900;
        changed.menuBarMode = MenuBarMode::numbers;
    });
    EXPECT_EQ(state.userInterval(), 900);
    EXPECT_EQ(state.effectiveInterval(), 900);
    EXPECT_EQ(state.menuBarMode(), MenuBarMode::numbers);
    state.updatePreferences([](Preferences& changed) { changed.userInterval = 30; });
    EXPECT_EQ(state.userInterval(), 60);
    EXPECT_EQ(state.effectiveInterval(), 180);
    EXPECT_EQ(state.preferences().userInterval, 60);
    const PreferencesStore again(files, preferencesFile, runAtOnce);
    EXPECT_EQ(again.current().userInterval, 60);
    EXPECT_EQ(again.current().menuBarMode, MenuBarMode::numbers);
}

TEST_F(AppStateSettingsTest, theModeThatItIsInWritesNothing)
{
    state.setMenuBarMode(MenuBarMode::numbers);
    EXPECT_EQ(state.menuBarMode(), MenuBarMode::numbers);
    EXPECT_EQ(PreferencesStore(files, preferencesFile, runAtOnce).current().menuBarMode,
              MenuBarMode::numbers);
    const auto before = test::stateOf(preferencesFile);
    state.setMenuBarMode(MenuBarMode::numbers);
    EXPECT_EQ(test::stateOf(preferencesFile), before);
    state.setMenuBarMode(MenuBarMode::bars);
    EXPECT_EQ(state.menuBarMode(), MenuBarMode::bars);
    EXPECT_NE(test::stateOf(preferencesFile), before);
}

TEST_F(AppStateSettingsTest, observersAreToldOnceATurnAndAfterTheChange)
{
    std::vector<double> seen;
    state.observe([&] { seen.push_back(state.userInterval()); });
    settle();
    seen.clear();
    state.setUserInterval(300);
    state.setUserInterval(600);
    EXPECT_TRUE(seen.empty());
    settle();
    EXPECT_EQ(seen, std::vector<double>{600});
    settle();
    EXPECT_EQ(seen.size(), 1U);
    state.updatePreferences([](Preferences& changed) { changed.menuBarDualBars = true; });
    settle();
    EXPECT_EQ(seen.size(), 2U);
}

} // namespace
} // namespace vellumor::appStateSettingsTest
