#pragma once

#include "app/AppDelegate.h"

#include "app/state/AppStateTesting.h"
#include "support/FakeNotifications.h"
#include "support/FakeStatusItem.h"
#include "support/RecordingTelemetry.h"
#include "ui/PopoverView.h"

#include <QAbstractButton>
#include <QApplication>
#include <qtestsupport_widgets.h>

#include <algorithm>

namespace vellumor::test {

using std::chrono::milliseconds;
using std::chrono::seconds;

// The delegate over a real state, with everything that it asks for noted.
struct AppDelegateTesting : AppStateTesting {
    FakeStatusItem statusItem{steps};
    FakeNotifications desktopNotifications;
    int givenBack = 0;
    bool isOnboardingDue = false;
    std::vector<std::string> pages;
    RecordingTelemetry told{steps};
    TelemetryStore telemetry{files, clock, folders.vellumor() + "/telemetry.json", runAtOnce};
    PrivacyModel privacy{telemetry, told, clock};
    GeneralModel general{{.clock = clock,
                          .isLaunchedAtLogin = [] { return ready(false); },
                          .setLaunchedAtLogin = {},
                          .autoUpdates = {},
                          .setAutoUpdates = {},
                          .checkForUpdates = {},
                          .removeAllData = {}}};
    AboutModel about{
        {.clock = clock, .look = [] { return ready(AboutModel::Facts{}); }, .showReports = [] {}}};
    AppDelegate delegate{parts(state, [this] { steps.emplace_back("polling"); })};

    AppDelegate::Parts parts(AppState& shown, std::function<void()> startPolling)
    {
        const auto note = [this](const char* step) { return [this, step] { noteStep(step); }; };
        return {
            .appState = shown,
            .clock = clock,
            .statusItem = statusItem,
            .notifications = desktopNotifications,
            .heal = note("heal"),
            .startPolling = std::move(startPolling),
            .markPresence = [this](Instant now) { return stepAt("presence", now); },
            .terminate = note("terminate"),
            .giveMemoryBack = [this] { ++givenBack; },
            .privacy = privacy,
            .general = general,
            .about = about,
            .settingsActions = {.openPage =
                                    [this](const char* address) { pages.emplace_back(address); }},
            .sweepCrashes = [this]() -> Task<> {
                noteStep("sweep");
                co_return;
            },
            .emitSpineIfDue = [this](Instant now) { return stepAt("spine", now); },
            .notePopoverOpened = [this] { told.notePopoverOpened(); },
            .isOnboardingDue = [this] { return isOnboardingDue; },
            .completeOnboarding = note("onboarding completed")};
    }

    ~AppDelegateTesting() override
    {
        settle();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    void noteStep(const std::string& step) { steps.push_back(step); }
    Task<> stepAt(std::string step, Instant now)
    {
        noteStep(step + " " + Format::isoWholeSeconds(now));
        co_return;
    }
    // With an account of the name of which `percent` of the session is used.
    void start(double percent = 40)
    {
        add("ada");
        state.setMenuBarMode(MenuBarMode::numbers);
        delegate.applicationDidFinishLaunching();
        settle();
        FetchOutcome outcome = read(UsageSource::endpoint);
        outcome.usage->windows[0].percent = percent;
        applyTo("ada", outcome);
        settle();
        steps.clear();
        statusItem.labels.clear();
    }
    static std::vector<QWidget*> shownWindows()
    {
        std::vector<QWidget*> shown;
        for (QWidget* window : QApplication::topLevelWidgets()) {
            if (window->isVisible())
                shown.push_back(window);
        }
        return shown;
    }
    static QWidget* shownWindow(const QString& title)
    {
        for (QWidget* window : shownWindows()) {
            if (window->windowTitle() == title)
                return window;
        }
        return nullptr;
    }
    static PopoverView* popover() { return dynamic_cast<PopoverView*>(shownWindow("Vellumor")); }
    static QWidget* settings() { return shownWindow("Vellumor Settings"); }
    void click() const { statusItem.handlers.onClick(QRect(700, 0, 22, 22), {}); }
    [[nodiscard]] std::ptrdiff_t count(const std::string& step) const
    {
        return std::count(steps.begin(), steps.end(), step);
    }
    // Presses a control of the window by its name.
    static void press(QWidget* window, const QString& name)
    {
        ASSERT_NE(window, nullptr);
        for (auto* const button : window->findChildren<QAbstractButton*>()) {
            if (button->accessibleName() == name || button->text() == name)
                return button->click();
        }
        FAIL() << name.toStdString();
    }
};

} // namespace vellumor::test
