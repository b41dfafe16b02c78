// What a scan brings, and what is read from the files behind it.

#include "accounts/AccountMerge.h"
#include "app/state/AccountList.h"
#include "app/state/AppState.h"

#include <algorithm>

namespace vellumor {

namespace {

using Kind = UsageFetchError::Kind;

std::vector<std::string> hiddenDirs(const StoredAccounts& records)
{
    std::vector<std::string> dirs;
    for (const auto& [configDir, record] : records) {
        if (record.isRemoved())
            dirs.push_back(configDir);
    }
    return dirs;
}

// What was read from the shared file, but for what this program has changed since it was asked for.
SharedIdentities withOwnChanges(SharedIdentities read, const SharedIdentities& before,
                                const SharedIdentities& now)
{
    for (const auto& [configDir, identity] : now) {
        const auto known = before.find(configDir);
        if (known == before.end() || known->second != identity)
            read.insert_or_assign(configDir, identity);
    }
    return read;
}

} // namespace

Task<> AppState::rescan()
{
    const int scan = ++m_scansBegun;
    DiscoveryInputs inputs{m_parts.store.knownDirs(), serviceOverrides(m_parts.store.records())};
    const auto looked = inputs.knownDirs;
    DiscoveryResult result = co_await m_parts.discover(std::move(inputs));
    if (result.scanFailed)
        co_return;
    const auto hidden = hiddenDirs(m_parts.store.records());
    const auto existing = co_await m_parts.existingFolders(hidden);
    const auto before = AccountMerge::sharedIdentities(m_parts.store.records());
    auto read = co_await m_parts.loadSharedIdentities();
    if (scan < m_scanShown)
        co_return; // one that began later knows more
    m_scanShown = scan;
    const auto shared = withOwnChanges(std::move(read), before,
                                       AccountMerge::sharedIdentities(m_parts.store.records()));
    // One that was hidden meanwhile has not been asked about.
    m_parts.store.forgetVanishedRemovals([&](const std::string& dir) {
        return existing.contains(dir) ||
               std::find(hidden.begin(), hidden.end(), dir) == hidden.end();
    });
    m_lastFacts = std::move(result.facts);
    rederive(shared);
    m_parts.telemetry.noteAccounts(m_accounts.size());
    noteNewAccounts();
    if (!m_accounts.empty() || m_parts.store.knownDirs().empty())
        co_await prune(looked);
    co_await reloadHistory();
    co_await reloadAnchors();
    co_await reloadReceipts();
}

void AppState::noteNewAccounts()
{
    for (const Account& account : m_parts.notifications.reconcile(m_accounts, preferences())) {
        if (std::ranges::find(m_newAccountNames, account.displayName) == m_newAccountNames.end())
            m_newAccountNames.push_back(account.displayName);
    }
}

void AppState::rederive(const SharedIdentities& shared)
{
    m_accounts =
        AccountMerge::merge(m_lastFacts, shared, m_parts.store.records(), AccountMerge::randomSlug);
    m_parts.store.persist();
    std::erase_if(m_states, [this](const auto& entry) { return account(entry.first) == nullptr; });
    for (const Account& each : m_accounts) {
        const bool isSignedOut = each.tokenStatus == TokenStatus::signedOut;
        if (!m_states.contains(each.id) && !isSignedOut)
            continue;
        AccountUsageState& state = m_states[each.id];
        state = forgettingSupersededConclusions(std::move(state), each.tokenExpiresAt);
        if (isSignedOut) {
            state.lastError = UsageFetchError{Kind::unauthorized, {}, {}, 0};
            state.revival = RevivalStatus::needsSignIn;
            state.concludedAbout = each.tokenExpiresAt;
        }
    }
    m_notice.announce();
}

// What belongs to no account any more goes. What belongs to a hidden one stays, so that bringing it
// back restores it as it was, and so does what the scan was not asked to look for: it was hidden
// when the scan began.
Task<> AppState::prune(std::vector<std::string> looked)
{
    auto keep = AccountList::configDirs(m_accounts);
    for (const auto& [configDir, record] : m_parts.store.records()) {
        if (record.isRemoved() ||
            std::find(looked.begin(), looked.end(), configDir) == looked.end())
            keep.push_back(configDir);
    }
    auto pruneStore = [keep](auto& store) { store.prune(keep); };
    co_await m_parts.stores.cache(pruneStore);
    co_await m_parts.stores.snapshots(pruneStore);
    co_await m_parts.stores.history(pruneStore);
    co_await m_parts.stores.anchors(pruneStore);
    co_await m_parts.stores.receipts(pruneStore);
}

Task<> AppState::seedFromSnapshots()
{
    auto load = [](UsageSnapshotStore& snapshots) { return snapshots.load(); };
    auto readings = co_await m_parts.stores.snapshots(std::move(load));
    for (const Account& each : m_accounts) {
        const auto reading = readings.find(each.configDir);
        const auto* known = state(each.id);
        if (reading == readings.end() || (known != nullptr && known->usage))
            continue;
        AccountUsageState& seeded = m_states[each.id];
        seeded.usage = reading->second;
        seeded.source = UsageSource::snapshot;
    }
    m_notice.announce();
}

Task<> AppState::reloadHistory()
{
    auto load = [dirs = AccountList::configDirs(m_accounts)](UsageHistoryStore& history) {
        std::map<std::string, History> loaded;
        for (const std::string& dir : dirs)
            loaded[dir] = history.load(dir);
        return loaded;
    };
    auto histories = co_await m_parts.stores.history(std::move(load));
    m_historyByDir = std::move(histories);
    m_notice.announce();
}

Task<> AppState::reloadAnchors()
{
    auto load = [](ResetAnchorStore& anchors) { return anchors.load(); };
    auto loaded = co_await m_parts.stores.anchors(std::move(load));
    m_resetAnchorsByDir = std::move(loaded);
    m_notice.announce();
}

} // namespace vellumor
