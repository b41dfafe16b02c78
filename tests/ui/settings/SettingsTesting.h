#pragma once

#include "app/state/AppStateTesting.h"
#include "support/FakeNotifications.h"
#include "ui/Accessibility.h"
#include "ui/model/settings/FakeGeneralParts.h"
#include "ui/settings/OnScreen.h"
#include "ui/settings/SettingsWindow.h"

#include <optional>

namespace vellumor::test {

// The settings' window over a whole state, with everything beyond it noted.
struct SettingsTesting : AppStateTesting, FakeGeneralParts {
    struct Recorder final : TelemetryRecorder {
        std::vector<TelemetryEvent> captured;
        void capture(const TelemetryEvent& event) override { captured.push_back(event); }
    };

    std::string preferencesFile = folders.vellumor() + "/preferences.json";
    std::string accountsFile = folders.vellumor() + "/accounts.json";
    Recorder recorder;
    TelemetryStore telemetryStore{files, clock, folders.vellumor() + "/telemetry.json", runAtOnce};
    PrivacyModel privacy{telemetryStore, recorder, clock};
    FakeNotifications desktopNotifications;
    Names done; // beyond the window, in order: "copy text", "open address", "terminal", ...
    AboutModel::Facts facts{{}, false, {"1.0.0", "12.0.0"}};
    SettingsActions::Chosen fileChosen;
    SettingsActions::Chosen folderChosen;
    SettingsActions actions{
        .chooseFile = [this](SettingsActions::Chosen chosen) { fileChosen = std::move(chosen); },
        .chooseFolder =
            [this](SettingsActions::Chosen chosen) { folderChosen = std::move(chosen); },
        .copy = [this](const std::string& text) { done.push_back("copy " + text); },
        .openTerminal = [this] { done.emplace_back("terminal"); },
        .openPage =
            [this](const char* address) { done.push_back(std::string("open ") + address); }};
    std::optional<GeneralModel> general;
    std::optional<AboutModel> about;
    std::optional<SettingsWindow> window;

    SettingsTesting()
    {
        Accessibility::install();
        general.emplace(generalParts(clock, true));
        about.emplace(AboutModel::Parts{.clock = clock,
                                        .look = [this] { return look(); },
                                        .showReports = [this] { done.emplace_back("reports"); }});
    }
    ~SettingsTesting() override
    {
        window.reset();
        settle();
        passEvents();
    }

    void open(SettingsTab tab)
    {
        if (!window)
            window.emplace(SettingsWindow::Parts{state, desktopNotifications, privacy, *general,
                                                 *about, actions});
        window->select(tab);
        window->bringToFront();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&*window));
        pass();
    }
    // Lets everything run that is due, and be shown.
    void pass()
    {
        settle();
        passEvents();
    }
    void pressIt(const std::string& name)
    {
        press(*window, name);
        pass();
    }
    [[nodiscard]] bool windowSays(const std::string& text) const { return says(*window, text); }
    [[nodiscard]] Preferences onDisk() const
    {
        return Preferences::decode(contentsOf(preferencesFile)).value_or(Preferences{});
    }
    [[nodiscard]] StoredAccount recordOnDisk(const std::string& name) const
    {
        return decodeStoredAccounts(contentsOf(accountsFile))[dirOf(name)];
    }
    [[nodiscard]] TelemetryConfig telemetryOnDisk() const
    {
        return TelemetryStore::load(telemetryStore.fileURL(), clock.now());
    }

private:
    Task<AboutModel::Facts> look()
    {
        auto known = facts;
        co_return known;
    }
};

} // namespace vellumor::test
