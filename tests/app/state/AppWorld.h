#pragma once

#include "accounts/ConfigDir.h"
#include "app/state/AppState.h"
#include "app/state/WatchedFileCalls.h"
#include "base/Format.h"
#include "support/FakeClock.h"
#include "support/PassWorker.h"
#include "support/RecordingTelemetry.h"
#include "support/TempFolder.h"
#include "usage/FakeCollaborators.h"

#include <QCoroCore>

#include <set>
#include <string>
#include <utility>
#include <vector>

namespace vellumor::test {

// The state with real stores and a fake pipeline behind it.
struct AppWorld {
    TempFolder home;
    Folders folders{home.path(), home.file("data"), home.file("config")};
    FakeClock clock{instant("2026-03-29T12:00:00Z")};
    WatchedFileCalls disk;
    FileStore files{disk};
    Worker worker;
    SharedAccountsStore sharedAccounts{files, folders.quorle() + "/accounts.json"};
    AccountStore store{files,       sharedAccounts, clock, folders.vellumor() + "/accounts.json",
                       home.path(), runAtOnce};
    PreferencesStore preferences{files, folders.vellumor() + "/preferences.json", runAtOnce};
    FakeCollaborators others;
    UsagePipeline pipeline{others, clock};
    UsageStores stores{worker, files, folders};
    Serial<PollerHeartbeatStore> heartbeat{worker, files, folders.quorle() + "/poller.json"};
    DiscoveryResult found;
    int scans = 0;
    std::vector<DiscoveryInputs> asked; // of each scan
    std::vector<std::string> steps;     // "scan", "look", "identities", as the state asks for them
    std::vector<std::string> examined;  // folders, as they were typed
    // Each holds back the next of its kind.
    Gate* scanGate = nullptr;
    Gate* lookGate = nullptr;
    Gate* identitiesGate = nullptr;
    Gate* folderGate = nullptr;
    std::vector<std::string> delivered; // bodies of notifications
    std::vector<std::string> recorded;  // by the state, for the reports
    RecordingTelemetry recorder{recorded};
    NotificationManager notifications{
        {[this](const std::string&, const std::string& body) { delivered.push_back(body); },
         [this] { return clock.now(); }, Format::isoWholeSeconds}};
    AppState state{{clock, store, preferences, [this] { return loadShared(); }, pipeline, stores,
                    heartbeat, [this](DiscoveryInputs inputs) { return scan(std::move(inputs)); },
                    [this](std::vector<std::string> dirs) { return existing(std::move(dirs)); },
                    notifications, [this](std::string typed) { return examine(std::move(typed)); },
                    recorder}};

    AppWorld() { others.results = {reading(40, clock.now())}; }

    // A config directory that the next scan finds.
    void add(const std::string& name, TokenStatus status = TokenStatus::readable)
    {
        DiscoveredFacts facts;
        facts.configDir = home.file(".claude-" + name);
        facts.email = name + "@example.org";
        facts.resolvedService = "Claude Code-credentials-" + name;
        facts.tokenStatus = status;
        facts.tokenExpiresAt = clock.now() + std::chrono::hours(1);
        found.facts.push_back(std::move(facts));
    }
    // Those of `names` alone are there for the next scan; all else of them stays as it was.
    void leaveOnly(const std::set<std::string>& names)
    {
        std::erase_if(found.facts, [&](const DiscoveredFacts& facts) {
            return !names.contains(facts.email->substr(0, facts.email->find('@')));
        });
    }
    void rescan() { waitFor(state.rescan()); }
    // Lets everything run that is due: the worker's jobs and the alarms of the moment.
    void settle()
    {
        for (int i = 0; i < 60; ++i) {
            passWorker(worker);
            clock.advance(std::chrono::milliseconds(0));
        }
    }
    // Ends a task that waits for time as well.
    void waitFor(Task<> task)
    {
        for (int i = 0; i < 200 && !task.isReady(); ++i) {
            settle();
            if (!task.isReady())
                clock.advance(std::chrono::milliseconds(500));
        }
        QCoro::waitFor(std::move(task));
    }
    [[nodiscard]] std::string id(const std::string& name) const
    {
        for (const Account& account : state.accounts()) {
            if (account.displayName == name)
                return account.id;
        }
        return {};
    }
    [[nodiscard]] const AccountUsageState& of(const std::string& name) const
    {
        static const AccountUsageState none;
        const auto* known = state.state(id(name));
        return known == nullptr ? none : *known;
    }
    [[nodiscard]] std::ptrdiff_t calls() const
    {
        return std::count(others.calls.begin(), others.calls.end(), "fetchUsage");
    }

private:
    // A service that the user forces on a directory is the one that is found.
    Task<DiscoveryResult> scan(DiscoveryInputs inputs)
    {
        ++scans;
        steps.emplace_back("scan");
        asked.push_back(inputs);
        auto result = found;
        for (DiscoveredFacts& facts : result.facts) {
            if (const auto forced = inputs.overrides.extract(facts.configDir))
                facts.resolvedService = forced.mapped();
        }
        co_await Through{std::exchange(scanGate, nullptr)};
        co_return result;
    }
    Task<std::set<std::string>> existing(std::vector<std::string> dirs)
    {
        steps.emplace_back("look");
        std::set<std::string> there;
        for (const std::string& dir : dirs) {
            for (const DiscoveredFacts& facts : found.facts) {
                if (facts.configDir == dir)
                    there.insert(dir);
            }
        }
        co_await Through{std::exchange(lookGate, nullptr)};
        co_return there;
    }
    Task<FolderState> examine(std::string typed)
    {
        examined.push_back(typed);
        const auto folder = DiskPath::folderState(ConfigDir::canonical(typed, home.path()));
        co_await Through{std::exchange(folderGate, nullptr)};
        co_return folder;
    }
    Task<SharedIdentities> loadShared()
    {
        steps.emplace_back("identities");
        auto identities = sharedAccounts.load();
        co_await Through{std::exchange(identitiesGate, nullptr)};
        co_return identities;
    }
};

} // namespace vellumor::test
