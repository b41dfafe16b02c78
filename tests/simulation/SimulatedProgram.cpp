#include "simulation/SimulatedProgram.h"

#include "async/Sleep.h"
#include "base/Format.h"
#include "store/DiskPath.h"
#include "store/PresenceMarker.h"

#include <utility>

namespace vellumor::simulation {

namespace {

using namespace std::chrono_literals;

KeychainReader::Sources withoutWaiting()
{
    KeychainReader::Sources sources;
    sources.beforeRereading = [] {};
    return sources;
}

} // namespace

SimulatedProgram::SimulatedProgram(World world)
    : m_world(std::move(world))
    , m_directories(m_world.home.path())
    , m_keychain(m_directories, m_keyring, m_world.clock, withoutWaiting())
    , m_readCredentials(
          [this](const std::string& service) { return m_keychain.readCredentials(service); })
    , m_client(m_world.endpoint, m_world.worker, m_world.clock, m_readCredentials,
               "http://127.0.0.1/usage")
    , m_sharedAccounts(m_world.files, m_world.folders.quorle() + "/accounts.json")
    , m_accounts(m_world.files, m_sharedAccounts, m_world.clock,
                 m_world.folders.vellumor() + "/accounts.json", m_world.home.path(), m_write)
    , m_preferences(m_world.files, m_world.folders.vellumor() + "/preferences.json", m_write)
    , m_stores(m_world.worker, m_world.files, m_world.folders)
    , m_heartbeat(m_world.worker, m_world.files, m_world.folders.quorle() + "/poller.json")
    , m_collaborators({m_stores, m_world.worker, m_client, m_reviver, m_network, m_readCredentials,
                       [this] { return m_preferences.current().localCacheOnly; },
                       [this] { return m_preferences.current().tokenRevivalEnabled; }})
    , m_pipeline(m_collaborators, m_world.clock)
    , m_notifications({[](const std::string&, const std::string&) {},
                       [this] { return m_world.clock.now(); }, Format::isoWholeSeconds})
    , m_state({m_world.clock, m_accounts, m_preferences, [this] { return loadSharedIdentities(); },
               m_pipeline, m_stores, m_heartbeat,
               [this](DiscoveryInputs inputs) { return discover(std::move(inputs)); },
               [this](std::vector<std::string> dirs) { return existingFolders(std::move(dirs)); },
               m_notifications})
{
    m_reviver.pathOverride = [] { return std::nullopt; };
    m_reviver.resolveBinary = [](std::optional<std::string>) -> Task<std::optional<std::string>> {
        std::optional<std::string> path = "/usr/bin/claude";
        co_return path;
    };
    m_reviver.runUsage = [this](std::string, std::string configDir, std::string) {
        return runUsage(std::move(configDir));
    };
}

// The order of the program's own start.
Task<> SimulatedProgram::startUp()
{
    co_await m_state.rescan();
    co_await m_state.seedFromSnapshots();
    m_state.recomputeEffectiveInterval(m_world.clock.now());
    auto afterTick = [this](Instant now) -> Task<> {
        PresenceMarker::writeOwn(m_world.files, "1.0.0", now, m_world.folders.quorle());
        m_world.afterTick();
        co_return;
    };
    m_poller.emplace(Poller::Parts{m_state, m_world.clock, [this] { return m_network.isOnline(); },
                                   [this] { return jitter(); }, std::move(afterTick)});
    m_network.onChange = [this](bool isOnline) { m_poller->observeNetwork(isOnline); };
    m_poller->startLoop(true);
}

Task<SharedIdentities> SimulatedProgram::loadSharedIdentities()
{
    auto load = [shared = m_sharedAccounts] { return shared.load(); };
    co_return co_await m_world.worker.run(std::move(load));
}

Task<DiscoveryResult> SimulatedProgram::discover(DiscoveryInputs inputs)
{
    auto scan = [this, inputs = std::move(inputs)] {
        return AccountDiscovery::live(inputs, m_world.home.path(), m_directories, m_keychain).run();
    };
    co_return co_await m_world.worker.run(std::move(scan));
}

Task<std::set<std::string>> SimulatedProgram::existingFolders(std::vector<std::string> folders)
{
    std::set<std::string> existing;
    for (const std::string& folder : folders) {
        if (DiskPath::isFolder(folder))
            existing.insert(folder);
    }
    co_return existing;
}

Task<int> SimulatedProgram::runUsage(std::string configDir)
{
    co_await Sleep(m_world.clock, 8s);
    const auto account = m_world.home.accountIn(configDir);
    const int status = account ? m_world.runClaude(*account) : 1;
    co_return status;
}

double SimulatedProgram::jitter()
{
    return std::uniform_real_distribution<double>(-0.1, 0.1)(m_world.random);
}

} // namespace vellumor::simulation
