#include "app/AppDelegateTesting.h"
#include "ui/settings/TabBarButton.h"

#include <algorithm>

namespace vellumor::appDelegateTest {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

using AppDelegateTest = test::AppDelegateTesting;

// What the start of the program looks like, from outside.
TEST_F(AppDelegateTest, theStartKeepsItsOrder)
{
    add("ada");
    delegate.applicationDidFinishLaunching();
    const std::string none = "label: Vellumor: no accounts pinned";
    EXPECT_EQ(steps,
              (test::Names{"sweep", "heal", "status item", none, "scan", "look", "identities"}));
    settle();
    const auto polling = std::find(steps.begin(), steps.end(), "polling");
    ASSERT_NE(polling, steps.end());
    ASSERT_GE(steps.end() - polling, 3);
    EXPECT_EQ(*(polling - 1), "label: ada loading");
    EXPECT_EQ(*(polling + 1), "spine 2026-03-29T12:00:00Z");
    EXPECT_EQ(*(polling + 2), "presence 2026-03-29T12:00:00Z");
    EXPECT_EQ(count("polling"), 1);
    EXPECT_EQ(count("scan"), 1);
}

TEST_F(AppDelegateTest, nothingIsPolledBeforeTheFirstScanHasEnded)
{
    test::Gate gate;
    scanGate = &gate;
    add("ada");
    delegate.applicationDidFinishLaunching();
    settle();
    clock.advance(seconds(30));
    EXPECT_EQ(count("polling"), 0);
    EXPECT_EQ(statusItem.labels.size(), 1U);
    gate.open();
    settle();
    EXPECT_EQ(count("polling"), 1);
}

// The accounts and their last readings are known when the polling begins, and so is the interval.
TEST_F(AppDelegateTest, theReadingsOfTheRunBeforeAreDrawnBeforeThePollingBegins)
{
    addAll({"ada", "bob", "cleo"});
    rescan();
    state.setPinned(id("bob"), false);
    state.setPinned(id("cleo"), false);
    Usage usage = test::reading(7, clock.now() - std::chrono::hours(3));
    UsageSnapshotStore(files, folders.vellumor() + "/usage-snapshots.json")
        .save(usage, dirOf("ada"));
    settle();
    steps.clear();
    AppState other{{clock, store, preferences,
                    [this]() -> Task<SharedIdentities> {
                        auto identities = sharedAccounts.load();
                        co_return identities;
                    },
                    pipeline, stores, heartbeat,
                    [this](DiscoveryInputs) -> Task<DiscoveryResult> {
                        auto result = found;
                        co_return result;
                    },
                    [](std::vector<std::string>) -> Task<std::set<std::string>> {
                        std::set<std::string> nothing;
                        co_return nothing;
                    },
                    notifications}};
    double intervalAtPolling = 0;
    AppDelegate fresh(parts(other, [&] {
        steps.emplace_back("polling");
        intervalAtPolling = other.effectiveInterval();
    }));
    fresh.applicationDidFinishLaunching();
    settle();
    const auto polling = std::find(steps.begin(), steps.end(), "polling");
    ASSERT_NE(polling, steps.end());
    EXPECT_EQ(*(polling - 1), "label: ada 7%, Weekly (Opus) 9%, showing last update");
    EXPECT_EQ(intervalAtPolling, 180);
}

TEST_F(AppDelegateTest, theMenuHasItsEntriesLinesAndShortcuts)
{
    delegate.applicationDidFinishLaunching();
    const struct {
        const char* text; // empty: a line
        std::vector<std::string> shortcut;
    } rows[] = {{"Refresh", {"Control", "r"}},       {"Scan for Accounts", {}}, {"", {}},
                {"Settings…", {"Control", "comma"}}, {"About Vellumor", {}},    {"", {}},
                {"Quit Vellumor", {"Control", "q"}}};
    const auto& menu = statusItem.handlers.menu;
    ASSERT_EQ(menu.size(), std::size(rows));
    for (std::size_t i = 0; i < menu.size(); ++i) {
        EXPECT_EQ(menu[i].text, rows[i].text);
        EXPECT_EQ(menu[i].shortcut, rows[i].shortcut);
        EXPECT_EQ(static_cast<bool>(menu[i].action), !menu[i].text.empty());
    }
}

TEST_F(AppDelegateTest, refreshInTheMenuFetchesByHand)
{
    start();
    others.calls.clear();
    applyTo("ada", failed(UsageFetchError::Kind::unauthorized)); // no round by itself asks for it
    statusItem.entry("Refresh").action();
    settle();
    EXPECT_EQ(calls(), 1);
    EXPECT_EQ(popover(), nullptr);
}

TEST_F(AppDelegateTest, scanInTheMenuScansAndFetchesNothing)
{
    start();
    add("bob");
    statusItem.entry("Scan for Accounts").action();
    settle();
    EXPECT_EQ(namesOf(state.accounts()), (test::Names{"ada", "bob"}));
    EXPECT_EQ(calls(), 0);
}

TEST_F(AppDelegateTest, quitEndsTheProgramFromMenuAndShortcut)
{
    start();
    statusItem.entry("Quit Vellumor").action();
    EXPECT_EQ(count("terminate"), 1);
    delegate.activate({});
    statusItem.entry("Settings…").action();
    ASSERT_NE(settings(), nullptr);
    for (QWidget* window : {static_cast<QWidget*>(popover()), settings()}) {
        ASSERT_NE(window, nullptr);
        ASSERT_EQ(window->actions().size(), 1);
        EXPECT_EQ(window->actions()[0]->text(), "Quit Vellumor");
        EXPECT_EQ(window->actions()[0]->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_Q));
    }
    settings()->actions()[0]->trigger();
    EXPECT_EQ(count("terminate"), 2);
}

TEST_F(AppDelegateTest, openingRefreshesWhatIsTwentySecondsOldOrWasNeverFetched)
{
    const std::pair<milliseconds, int> rows[] = {{milliseconds(0), 0},
                                                 {milliseconds(19999), 0},
                                                 {milliseconds(20000), 1},
                                                 {seconds(300), 1}};
    start();
    for (const auto& [age, fetches] : rows) {
        waitFor(state.refresh(true));
        const Instant updated = *state.lastUpdated();
        clock.advance(std::chrono::floor<milliseconds>(updated + age - clock.now()));
        others.calls.clear();
        const auto scansBefore = scans;
        click();
        ASSERT_NE(popover(), nullptr);
        EXPECT_EQ(state.states().at(id("ada")).isLoading, fetches == 1) << age.count();
        settle();
        EXPECT_EQ(scans, scansBefore);
        click();
        EXPECT_EQ(popover(), nullptr);
        settle();
    }
}

TEST_F(AppDelegateTest, openingBeforeAnyRoundStartsOneThatIsNotByHand)
{
    start();
    ASSERT_EQ(state.lastUpdated(), std::nullopt);
    applyTo("ada", failed(UsageFetchError::Kind::keychain)); // only a round by hand asks for it
    others.calls.clear();
    click();
    settle();
    EXPECT_EQ(calls(), 0);
    EXPECT_EQ(state.lastUpdated(), clock.now());
}

TEST_F(AppDelegateTest, closingRefreshesNothing)
{
    start();
    waitFor(state.refresh(true));
    click();
    ASSERT_NE(popover(), nullptr);
    clock.advance(seconds(60));
    settle();
    others.calls.clear();
    click();
    settle();
    EXPECT_EQ(popover(), nullptr);
    EXPECT_EQ(calls(), 0);
}

TEST_F(AppDelegateTest, freeMemoryIsGivenBackAfterTheStartAndAfterThePopover)
{
    start();
    EXPECT_EQ(givenBack, 0);
    clock.advance(std::chrono::seconds(12));
    EXPECT_EQ(givenBack, 1);
    click();
    click();
    clock.advance(std::chrono::seconds(1));
    EXPECT_EQ(givenBack, 2);
}

TEST_F(AppDelegateTest, askedForTwiceThePopoverStaysOpen)
{
    start();
    delegate.activate("token-1");
    const PopoverView* const first = popover();
    ASSERT_NE(first, nullptr);
    delegate.activate("token-2");
    EXPECT_EQ(popover(), first);
    delegate.activate({});
    EXPECT_EQ(popover(), first);
    click();
    EXPECT_EQ(popover(), nullptr);
}

TEST_F(AppDelegateTest, aNotificationThatIsFollowedOpensThePopoverAndLeavesAnOpenOne)
{
    start();
    desktopNotifications.open("a-token");
    const PopoverView* const first = popover();
    ASSERT_NE(first, nullptr);
    desktopNotifications.open({});
    EXPECT_EQ(popover(), first);
}

// The click on the panel takes the focus first, so the popover is closed when it is told of it.
TEST_F(AppDelegateTest, theClickThatTookTheFocusDoesNotOpenItAgain)
{
    start();
    click();
    ASSERT_NE(popover(), nullptr);
    ASSERT_TRUE(QTest::qWaitForWindowActive(popover()));
    QEvent deactivate(QEvent::WindowDeactivate);
    QCoreApplication::sendEvent(popover(), &deactivate);
    ASSERT_EQ(popover(), nullptr);
    click();
    EXPECT_EQ(popover(), nullptr);
    delegate.activate({}); // who asks for it otherwise gets it
    EXPECT_NE(popover(), nullptr);
}

TEST_F(AppDelegateTest, theButtonsOfThePopoverRefreshAndOpenTheSettings)
{
    start();
    waitFor(state.refresh(true));
    click();
    others.calls.clear();
    clock.advance(seconds(100));
    press(popover(), "Refresh now");
    EXPECT_TRUE(of("ada").isLoading);
    settle();
    EXPECT_EQ(settings(), nullptr);
    press(popover(), "Settings");
    EXPECT_EQ(popover(), nullptr);
    EXPECT_NE(settings(), nullptr);
}

// The name of the tab that is chosen.
std::string chosenTab(const QWidget* window)
{
    for (const auto* button : window->findChildren<QAbstractButton*>()) {
        if (button->isChecked() && qobject_cast<const TabBarButton*>(button) != nullptr)
            return button->text().toStdString();
    }
    return "none";
}

TEST_F(AppDelegateTest, theSettingsAreOneWindowThatKeepsItsTab)
{
    start();
    statusItem.entry("Settings…").action();
    QWidget* const window = settings();
    ASSERT_NE(window, nullptr);
    EXPECT_EQ(chosenTab(window), "Accounts");
    statusItem.entry("About Vellumor").action();
    EXPECT_EQ(settings(), window);
    EXPECT_EQ(chosenTab(window), "About");
    window->close();
    EXPECT_EQ(settings(), nullptr);
    statusItem.entry("Settings…").action();
    EXPECT_EQ(settings(), window);
    EXPECT_EQ(chosenTab(window), "About");
}

TEST_F(AppDelegateTest, theSettingsOpenAtTheTabThatIsAskedForFirst)
{
    start();
    statusItem.entry("About Vellumor").action();
    ASSERT_NE(settings(), nullptr);
    EXPECT_EQ(chosenTab(settings()), "About");
    const Qt::WindowFlags flags = settings()->windowFlags();
    EXPECT_TRUE(flags.testFlag(Qt::WindowCloseButtonHint));
    EXPECT_TRUE(flags.testFlag(Qt::WindowMinimizeButtonHint));
    EXPECT_FALSE(flags.testFlag(Qt::WindowMaximizeButtonHint));
    EXPECT_EQ(settings()->minimumSize(), settings()->maximumSize());
}

TEST_F(AppDelegateTest, everyChangeReachesTheLabel)
{
    start();
    const auto lastText = [this] {
        settle();
        return statusItem.labels.empty() ? "nothing" : statusItem.labels.back().text;
    };
    applyTo("ada", failed(UsageFetchError::Kind::forbidden));
    EXPECT_EQ(lastText(), "ada blocked");
    applyTo("ada", read(UsageSource::endpoint));
    EXPECT_EQ(lastText(), "ada 40%");
    state.setMenuBarMode(MenuBarMode::bars);
    EXPECT_EQ(lastText(), "ada 40%, Weekly (Opus) 42%");
    state.rename(account("ada"), "Work");
    EXPECT_EQ(lastText(), "Work 40%, Weekly (Opus) 42%");
    state.setPinned(id("Work"), false);
    EXPECT_EQ(lastText(), "Vellumor: no accounts pinned");
}

TEST_F(AppDelegateTest, thePicturesAreDrawnAnewOnlyWhenTheyChange)
{
    start();
    delegate.updateLabel();
    const StatusLabel first = statusItem.labels.back();
    delegate.updateLabel();
    EXPECT_EQ(statusItem.labels.back().whole[0].cacheKey(), first.whole[0].cacheKey());
    state.rename(account("ada"), "Work"); // the words alone
    delegate.updateLabel();
    EXPECT_EQ(statusItem.labels.back().whole[0].cacheKey(), first.whole[0].cacheKey());
    EXPECT_EQ(statusItem.labels.back().text, "Work 40%");
    FetchOutcome more = read(UsageSource::endpoint);
    more.usage->windows[0].percent = 90;
    applyTo("Work", more);
    delegate.updateLabel();
    EXPECT_NE(statusItem.labels.back().whole[0], first.whole[0]);
    applyTo("Work", read(UsageSource::endpoint));
    delegate.updateLabel();
    EXPECT_EQ(statusItem.labels.back().whole, first.whole);
    state.updatePreferences([](Preferences& changed) { changed.menuBarDualBars = true; });
    delegate.updateLabel();
    EXPECT_NE(statusItem.labels.back().whole[0], first.whole[0]);
}

TEST_F(AppDelegateTest, theLabelDimsByItselfWhenAReadingGrowsTooOld)
{
    start();
    clock.advance(seconds(12)); // what is given back after the start
    ASSERT_EQ(clock.pendingAlarms(), 1U);
    clock.advance(seconds(348)); // three times the usual interval in all
    EXPECT_TRUE(statusItem.labels.empty());
    clock.advance(milliseconds(1));
    ASSERT_EQ(statusItem.labels.size(), 1U);
    EXPECT_EQ(statusItem.labels[0].text, "ada 40%, showing last update");
    EXPECT_EQ(clock.pendingAlarms(), 0U);
    clock.advance(std::chrono::hours(24));
    EXPECT_EQ(statusItem.labels.size(), 1U);
}

// With more accounts than the chosen interval has room for each is fetched less often.
TEST_F(AppDelegateTest, theLabelDimsByTheIntervalThatIsReallyKept)
{
    addAll({"bob", "cleo"});
    start();
    state.setUserInterval(60);
    state.setPinned(id("bob"), false);
    state.setPinned(id("cleo"), false);
    applyTo("ada", read(UsageSource::endpoint));
    settle();
    clock.advance(seconds(12)); // what is given back after the start
    statusItem.labels.clear();
    clock.advance(milliseconds(288'001));
    EXPECT_TRUE(statusItem.labels.empty());
    delegate.updateLabel();
    EXPECT_EQ(statusItem.labels.back().text, "ada 40%");
    statusItem.labels.clear();
    clock.advance(milliseconds(239'999));
    EXPECT_TRUE(statusItem.labels.empty());
    clock.advance(milliseconds(1));
    ASSERT_EQ(statusItem.labels.size(), 1U);
    EXPECT_EQ(statusItem.labels[0].text, "ada 40%, showing last update");
}

TEST_F(AppDelegateTest, whereNoReadingIsDrawnNoAlarmWaits)
{
    start();
    state.setPinned(id("ada"), false);
    settle();
    clock.advance(seconds(12)); // what is given back after the start
    EXPECT_EQ(clock.pendingAlarms(), 0U);
}

} // namespace
} // namespace vellumor::appDelegateTest
