#include "app/Program.h"

#include "accounts/AccountDiscovery.h"
#include "accounts/ConfigDir.h"
#include "app/BuildSettings.h"
#include "base/SecureRandom.h"
#include "base/Version.h"
#include "diagnostics/crash/CrashReportScanner.h"
#include "platform/linux/LoginShell.h"
#include "platform/linux/SessionBus.h"
#include "store/DiskPath.h"
#include "store/PresenceMarker.h"
#include "ui/ShortTime.h"
#include "usage/ApiBase.h"

#include <QDeadlineTimer>
#include <QThread>
#include <QThreadPool>

#include <atomic>

namespace vellumor {

namespace {

constexpr const char* siblingName = "ostrelline";

// Uniform in -0.1 to 0.1.
double jitter()
{
    constexpr std::uint32_t steps = 20001;
    return static_cast<double>(SecureRandom::below(steps)) / (steps - 1) * 0.2 - 0.1;
}

// Empty for the usual one.
std::string systemBusAddress(const Environment& environment)
{
    return value(environment, "DBUS_SYSTEM_BUS_ADDRESS").value_or("");
}

} // namespace

Program::Program(const Environment& environment, Folders folders, std::function<void()> terminate)
    : m_environment(environment)
    , m_folders(std::move(folders))
    , m_keyring(SessionBus::address(environment))
    , m_client(m_transport, m_accountWorker, m_clock, m_readCredentials,
               ApiBase::usageEndpoint(environment, BuildSettings::apiBase))
    , m_paths(m_accountWorker, systemBusAddress(environment))
    , m_reports(environment, m_folders,
                {m_clock, m_files, m_storeWorker, m_write, m_transport, m_processes,
                 [this] { return m_network.isOnline(); }, [this] { return spineContext(); }})
    , m_upkeep(environment, m_folders,
               {m_clock, m_files, m_fileCalls, m_storeWorker, m_write, [this] { stopPolling(); },
                std::move(terminate)})
    , m_finder(m_processes, m_accountWorker, m_claudePath,
               {environment, m_folders.home, LoginShell::path(environment),
                m_folders.vellumor() + "/revive"})
    , m_headless(m_processes, m_accountWorker, m_files,
                 {environment, m_folders.home, LoginShell::path(environment)})
    , m_collaborators({m_stores, m_accountWorker, m_client, m_reviver, m_network, m_readCredentials,
                       [this] { return m_preferences.current().localCacheOnly; },
                       [this] { return m_preferences.current().tokenRevivalEnabled; }})
    , m_notifications({[this](const std::string& title, const std::string& body) {
                           m_desktopNotifications.deliver(title, body);
                       },
                       [this] { return m_clock.now(); },
                       [](Instant moment) { return shortTimeText(moment); }})
    , m_appState(
          {m_clock, m_accounts, m_preferences, [this] { return loadSharedIdentities(); },
           m_pipeline, m_stores, m_heartbeat,
           [this](DiscoveryInputs inputs) { return discover(std::move(inputs)); },
           [this](std::vector<std::string> dirs) { return existingFolders(std::move(dirs)); },
           m_notifications, [this](std::string typed) { return examineFolder(std::move(typed)); },
           m_reports.recorder()})
    , m_sleep(m_accountWorker, systemBusAddress(environment), m_clock)
{
    m_files.ensureDirectory(m_folders.vellumor() + "/revive");
    setUpReviver();
}

void Program::setUpReviver()
{
    m_reviver.workDir = m_folders.vellumor() + "/revive";
    m_reviver.pathOverride = [this]() -> std::optional<std::string> {
        const std::string& chosen = m_preferences.current().claudeBinaryPath;
        return chosen.empty() ? std::nullopt : std::optional(chosen);
    };
    m_reviver.resolveBinary = [this](std::optional<std::string> preference) {
        return m_finder.resolveClaudeBinary(std::move(preference));
    };
    m_reviver.runUsage = [this](std::string binary, std::string configDir, std::string workDir) {
        return m_headless.spawnUsage(std::move(binary), std::move(configDir), std::move(workDir));
    };
}

void Program::startPolling()
{
    if (m_isStopped) // before the first scan was over
        return;
    m_poller.emplace(Poller::Parts{m_appState, m_clock, [this] { return m_network.isOnline(); },
                                   jitter, [this](Instant now) { return afterTick(now); }});
    m_sleep.start([this] { m_poller->willSleep(); },
                  [this] {
                      if (m_isStopped)
                          return;
                      m_appState.recomputeEffectiveInterval(
                          m_clock.now()); // what has grown old in the sleep
                      m_poller->didWake();
                      m_upkeep.updates().noteWake();
                  });
    m_network.onChange = [this](bool isOnline) {
        if (!m_isStopped)
            m_poller->observeNetwork(isOnline);
    };
    m_poller->startLoop(true);
    m_upkeep.updates().start();
}

void Program::stopPolling()
{
    m_isStopped = true;
    if (m_poller)
        m_poller->stopLoop();
}

Task<> Program::afterTick(Instant now)
{
    co_await m_reports.emitSpineIfDue(now);
    co_await markPresence(now);
}

Task<TelemetrySpine::Context> Program::spineContext()
{
    auto look = [folder = m_folders.quorle()] {
        return PresenceMarker::siblingInstalled(siblingName, folder);
    };
    const bool isSiblingInstalled = co_await m_storeWorker.run(std::move(look));
    const bool isLaunchedAtLogin = co_await m_upkeep.isLaunchedAtLogin();
    TelemetrySpine::Context context{.siblingInstalled = isSiblingInstalled,
                                    .accountCount = m_appState.accounts().size(),
                                    .notificationsEnabled =
                                        m_preferences.current().notificationsEnabled,
                                    .launchAtLogin = isLaunchedAtLogin,
                                    .offlineMode = m_preferences.current().localCacheOnly};
    co_return context;
}

Task<AboutModel::Facts> Program::aboutFacts()
{
    auto look = [folders = m_folders, now = m_clock.now()] {
        return AboutModel::Facts{CrashReportScanner::recentDigests(CrashReportScanner::recentDays,
                                                                   now, folders.crashReports()),
                                 PresenceMarker::siblingInstalled(siblingName, folders.quorle()),
                                 SupportReport::Environment::current()};
    };
    co_return co_await m_storeWorker.run(std::move(look));
}

void Program::completeOnboarding()
{
    m_onboarding.setCurrent({.completedVersion = OnboardingState::currentVersion});
}

// On a thread that goes away afterwards: the first scan does not wait for it.
void Program::healInBackground() const
{
    QThreadPool::globalInstance()->setExpiryTimeout(1000); // it is not needed again for long
    QThreadPool::globalInstance()->start([files = m_files, folders = m_folders] {
        files.healTree(folders.vellumor());
        files.healTree(folders.quorle());
    });
}

Task<SharedIdentities> Program::loadSharedIdentities()
{
    auto load = [shared = m_sharedAccounts] { return shared.load(); };
    co_return co_await m_storeWorker.run(std::move(load));
}

Task<DiscoveryResult> Program::discover(DiscoveryInputs inputs)
{
    auto scan = [this, inputs = std::move(inputs)] {
        return AccountDiscovery::live(inputs, m_folders.home, m_directories, m_keychain).run();
    };
    co_return co_await m_accountWorker.run(std::move(scan));
}

Task<std::set<std::string>> Program::existingFolders(std::vector<std::string> folders)
{
    auto look = [folders = std::move(folders)] {
        std::set<std::string> existing;
        for (const std::string& folder : folders) {
            if (DiskPath::isFolder(folder))
                existing.insert(folder);
        }
        return existing;
    };
    co_return co_await m_accountWorker.run(std::move(look));
}

Task<FolderState> Program::examineFolder(std::string typed)
{
    auto look = [path = ConfigDir::canonical(typed, m_folders.home)] {
        return DiskPath::folderState(path);
    };
    co_return co_await m_accountWorker.run(std::move(look));
}

Task<> Program::markPresence(Instant now)
{
    auto mark = [this, now] {
        PresenceMarker::writeOwn(m_files, std::string(version), now, m_folders.quorle());
    };
    co_await m_storeWorker.run(std::move(mark));
}

void Program::finishWrites()
{
    constexpr std::chrono::seconds limit{2}; // a disk that hangs must not hold the end
    constexpr unsigned long step = 2;        // milliseconds
    auto isDone = std::make_shared<std::atomic<bool>>(false);
    m_storeWorker.post([isDone] { *isDone = true; });
    const QDeadlineTimer deadline(limit);
    while (!*isDone && !deadline.hasExpired())
        QThread::msleep(step);
}

} // namespace vellumor
