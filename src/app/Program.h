#pragma once

#include "accounts/AccountStore.h"
#include "accounts/KeychainReader.h"
#include "app/Reports.h"
#include "app/Upkeep.h"
#include "app/state/AppState.h"
#include "app/state/Poller.h"
#include "async/LiveClock.h"
#include "platform/linux/FreedesktopNotifications.h"
#include "platform/linux/LogindSleepWatcher.h"
#include "platform/linux/QtHttpTransport.h"
#include "platform/linux/QtPathMonitor.h"
#include "platform/linux/QtProcessRunner.h"
#include "platform/linux/SecretServiceKeyring.h"
#include "store/Folders.h"
#include "store/OnboardingStore.h"
#include "store/SealableFileCalls.h"
#include "ui/model/settings/AboutModel.h"
#include "usage/ClaudeBinaryFinder.h"
#include "usage/HeadlessUsage.h"
#include "usage/LiveCollaborators.h"
#include "usage/NetworkMonitor.h"

#include <optional>

namespace vellumor {

// The running program without its screens: every part made once, in the order in which they lean on
// one another, and the order of what happens at the start.
class Program {
public:
    // `terminate` ends the event loop.
    Program(const Environment& environment, Folders folders, std::function<void()> terminate);

    [[nodiscard]] AppState& appState() { return m_appState; }
    [[nodiscard]] Clock& clock() { return m_clock; }
    [[nodiscard]] Notifications& notifications() { return m_desktopNotifications; }

    [[nodiscard]] Reports& reports() { return m_reports; }
    [[nodiscard]] Upkeep& upkeep() { return m_upkeep; }
    [[nodiscard]] std::string crashReports() const { return m_folders.crashReports(); }
    // What the settings tell about this installation.
    [[nodiscard]] Task<AboutModel::Facts> aboutFacts();
    [[nodiscard]] bool isOnboardingDue() const { return m_onboarding.shouldShow(m_environment); }
    void completeOnboarding();

    // Gives the two data folders the rights they should have, on a thread of its own.
    void healInBackground() const;
    // Starts the loop, unless it was stopped before; once, when the accounts are known.
    void startPolling();
    // For good: neither a wake nor the network begins it anew.
    void stopPolling();
    // Tells the sibling that this program is here.
    [[nodiscard]] Task<> markPresence(Instant now);
    // Before the end: waits until what is being written is written, some seconds at most.
    void finishWrites();

private:
    [[nodiscard]] Task<DiscoveryResult> discover(DiscoveryInputs inputs);
    [[nodiscard]] Task<std::set<std::string>> existingFolders(std::vector<std::string> folders);
    [[nodiscard]] Task<FolderState> examineFolder(std::string typed);
    [[nodiscard]] Task<SharedIdentities> loadSharedIdentities();
    [[nodiscard]] Task<TelemetrySpine::Context> spineContext();
    [[nodiscard]] Task<> afterTick(Instant now);
    void setUpReviver();

    Environment m_environment;
    Folders m_folders;
    LiveClock m_clock;
    SealableFileCalls m_fileCalls;
    FileStore m_files{m_fileCalls};
    Worker m_storeWorker;   // what the program keeps
    Worker m_accountWorker; // credentials and config directories, which may hang
    RunJob m_write = [this](std::function<void()> job) { m_storeWorker.post(std::move(job)); };

    SecretServiceKeyring m_keyring;
    ServiceDirectories m_directories{m_folders.home};
    KeychainReader m_keychain{m_directories, m_keyring, m_clock};
    UsageClient::ReadCredentials m_readCredentials = [this](const std::string& service) {
        return m_keychain.readCredentials(service);
    };
    QtHttpTransport m_transport;
    UsageClient m_client;
    QtPathMonitor m_paths;
    NetworkMonitor m_network{m_paths};

    QtProcessRunner m_processes{m_clock};
    Reports m_reports;
    Upkeep m_upkeep;
    PersistedClaudePath m_claudePath{m_files, m_folders.vellumor() + "/claude-path.json"};
    ClaudeBinaryFinder m_finder;
    HeadlessUsage m_headless;
    TokenReviver m_reviver;

    SharedAccountsStore m_sharedAccounts{m_files, m_folders.quorle() + "/accounts.json"};
    AccountStore m_accounts{m_files,        m_sharedAccounts,
                            m_clock,        m_folders.vellumor() + "/accounts.json",
                            m_folders.home, m_write};
    PreferencesStore m_preferences{m_files, m_folders.vellumor() + "/preferences.json", m_write};
    OnboardingStore m_onboarding{m_files, m_folders.vellumor() + "/onboarding.json", m_write};
    UsageStores m_stores{m_storeWorker, m_files, m_folders};
    Serial<PollerHeartbeatStore> m_heartbeat{m_storeWorker, m_files,
                                             m_folders.quorle() + "/poller.json"};
    LiveCollaborators m_collaborators;
    UsagePipeline m_pipeline{m_collaborators, m_clock};
    FreedesktopNotifications m_desktopNotifications;
    NotificationManager m_notifications;
    AppState m_appState;
    LogindSleepWatcher m_sleep;
    bool m_isStopped = false;
    std::optional<Poller> m_poller; // once the first scan is over
};

} // namespace vellumor
