#pragma once

#include "accounts/AccountDiscovery.h"
#include "accounts/KeychainReader.h"
#include "app/state/AppState.h"
#include "app/state/Poller.h"
#include "simulation/Endpoint.h"
#include "simulation/Home.h"
#include "store/Folders.h"
#include "support/FakeKeyring.h"
#include "usage/LiveCollaborators.h"
#include "usage/NetworkMonitor.h"

#include <functional>
#include <optional>
#include <random>
#include <vector>

namespace vellumor::simulation {

// Tells online and offline as the world says.
class SimulatedPaths final : public PathMonitor {
public:
    void start(std::function<void(bool)> onUpdate) override { m_onUpdate = std::move(onUpdate); }
    void set(bool isOnline) { m_onUpdate(isOnline); }

private:
    std::function<void(bool)> m_onUpdate;
};

// One run of the program, from its start to its end: everything real but the clock, the endpoint,
// the network's state, Claude Code's program, and the waiting for the disk.
class SimulatedProgram {
public:
    struct World {
        Timeline& timeline;
        test::FakeClock& clock;
        Worker& worker;
        const FileStore& files;
        Folders folders;
        Home& home;
        Endpoint& endpoint;
        std::mt19937& random;
        // Claude Code is run for an account; gives its exit status.
        std::function<int(int account)> runClaude;
        std::function<void()> afterTick;
    };

    explicit SimulatedProgram(World world);

    [[nodiscard]] AppState& state() { return m_state; }
    [[nodiscard]] PreferencesStore& preferences() { return m_preferences; }
    [[nodiscard]] Instant now() const { return m_world.clock.now(); }
    [[nodiscard]] bool isOnline() const { return m_network.isOnline(); }
    void start() { m_tasks.push_back(startUp()); }
    void refreshByHand() { m_tasks.push_back(m_state.refresh(true)); }
    void willSleep() { m_poller->willSleep(); }
    void didWake() { m_poller->didWake(); }
    void setOnline(bool isOnline) { m_paths.set(isOnline); }
    // Nothing new begins; what is under way goes on.
    void stopLoop() { m_poller->stopLoop(); }

private:
    [[nodiscard]] Task<> startUp();
    [[nodiscard]] Task<SharedIdentities> loadSharedIdentities();
    [[nodiscard]] Task<DiscoveryResult> discover(DiscoveryInputs inputs);
    [[nodiscard]] Task<std::set<std::string>> existingFolders(std::vector<std::string> folders);
    [[nodiscard]] Task<int> runUsage(std::string configDir);
    [[nodiscard]] double jitter();

    World m_world;
    RunJob m_write = [this](std::function<void()> job) { m_world.worker.post(std::move(job)); };
    test::FakeKeyring m_keyring;
    ServiceDirectories m_directories;
    KeychainReader m_keychain;
    UsageClient::ReadCredentials m_readCredentials;
    UsageClient m_client;
    SimulatedPaths m_paths;
    NetworkMonitor m_network{m_paths};
    TokenReviver m_reviver;
    SharedAccountsStore m_sharedAccounts;
    AccountStore m_accounts;
    PreferencesStore m_preferences;
    UsageStores m_stores;
    Serial<PollerHeartbeatStore> m_heartbeat;
    LiveCollaborators m_collaborators;
    UsagePipeline m_pipeline;
    NotificationManager m_notifications;
    AppState m_state;
    std::optional<Poller> m_poller;
    std::vector<Task<>> m_tasks;
};

} // namespace vellumor::simulation
