#include "app/state/AppState.h"

#include "accounts/AccountMerge.h"
#include "app/state/AccountList.h"
#include "app/state/Stagger.h"
#include "async/Sleep.h"
#include "base/Log.h"
#include "base/Text.h"
#include "usage/ClaimGate.h"

#include <fmt/format.h>

#include <algorithm>

namespace vellumor {

namespace {

using Kind = UsageFetchError::Kind;

constexpr std::chrono::seconds blockAfterForbidden{1800};
constexpr std::chrono::seconds betweenStarts{2};

bool hasError(const AccountUsageState* state, std::initializer_list<Kind> kinds)
{
    return state != nullptr && state->lastError &&
           std::find(kinds.begin(), kinds.end(), state->lastError->kind) != kinds.end();
}

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

AppState::AppState(Parts parts)
    : m_parts(std::move(parts))
    , m_notice(m_parts.clock)
    , m_menuBarMode(m_parts.preferences.current().menuBarMode)
    , m_userInterval(m_parts.preferences.current().userInterval)
{
}

// --- Who may be fetched -------------------------------------------------------------------------

const AccountUsageState* AppState::state(const std::string& id) const
{
    const auto found = m_states.find(id);
    return found == m_states.end() ? nullptr : &found->second;
}

const Account* AppState::account(const std::string& id) const
{
    const auto found = std::find_if(m_accounts.begin(), m_accounts.end(),
                                    [&](const Account& account) { return account.id == id; });
    return found == m_accounts.end() ? nullptr : &*found;
}

std::vector<Account> AppState::manualTargets(Instant now) const
{
    auto targets = AccountList::orderedTracked(m_accounts);
    std::erase_if(targets, [&](const Account& target) {
        const auto* known = state(target.id);
        return known != nullptr && known->isBlocked(now);
    });
    return targets;
}

std::vector<Account> AppState::pollableAccounts(Instant now) const
{
    auto pollable = manualTargets(now);
    std::erase_if(pollable, [&](const Account& target) {
        return target.tokenStatus != TokenStatus::readable ||
               hasError(state(target.id), {Kind::keychain, Kind::noService, Kind::unauthorized});
    });
    return pollable;
}

std::vector<Account> AppState::revivableAccounts(Instant now) const
{
    if (!preferences().tokenRevivalEnabled)
        return {};
    auto revivable = manualTargets(now);
    std::erase_if(revivable, [&](const Account& target) {
        const auto* known = state(target.id);
        const bool isDead = target.tokenStatus == TokenStatus::expired ||
                            target.tokenStatus == TokenStatus::signedOut;
        const bool isRefused =
            target.tokenStatus == TokenStatus::readable && hasError(known, {Kind::unauthorized});
        const bool needsSignIn = known != nullptr && known->revival == RevivalStatus::needsSignIn;
        return needsSignIn || !(isDead || isRefused);
    });
    return revivable;
}

std::vector<Account> AppState::rotation(Instant now) const
{
    auto all = pollableAccounts(now);
    const auto revivable = revivableAccounts(now);
    all.insert(all.end(), revivable.begin(), revivable.end());
    return all;
}

void AppState::recomputeEffectiveInterval(Instant now)
{
    m_effectiveInterval = Stagger::effectiveInterval(m_userInterval, pollableAccounts(now).size());
    m_notice.announce();
}

double AppState::slotInterval(Instant now) const
{
    return m_effectiveInterval /
           static_cast<double>(std::max<std::size_t>(rotation(now).size(), 1));
}

// --- Rounds -------------------------------------------------------------------------------------

Task<> AppState::refresh(bool manual)
{
    const Instant now = m_parts.clock.now();
    const auto targets = manual ? manualTargets(now) : rotation(now);
    recomputeEffectiveInterval(now);
    claimHeartbeatIfProducing(now);
    if (targets.empty()) {
        m_lastUpdated = now;
        m_notice.announce();
        co_return;
    }
    for (const Account& target : targets) {
        m_states[target.id].isLoading = true;
        m_staggerLastAttempt[target.id] = now;
    }
    m_notice.announce();
    const auto coverageWindow = co_await foreignCoverageWindow(now);
    std::vector<Task<>> children;
    std::chrono::milliseconds delay{};
    for (const Account& target : targets) {
        children.push_back(fetchAndApply(requestFor(target, manual, coverageWindow), delay));
        delay += betweenStarts;
    }
    for (Task<>& child : children)
        co_await child;
    co_await finishRound();
}

Task<> AppState::refreshNext()
{
    const Instant now = m_parts.clock.now();
    recomputeEffectiveInterval(now);
    claimHeartbeatIfProducing(now);
    const auto candidates = rotation(now);
    const auto next = Stagger::nextTarget(AccountList::ids(candidates), m_staggerLastAttempt);
    if (!next) {
        m_lastUpdated = now;
        m_notice.announce();
        co_return;
    }
    const auto target = std::find_if(candidates.begin(), candidates.end(),
                                     [&](const Account& each) { return each.id == *next; });
    m_staggerLastAttempt[*next] = now;
    m_states[*next].isLoading = true;
    m_notice.announce();
    log(Tag::stagger, fmt::format("tick → {} (slot {:.0f}s, rotation {})", target->displayName,
                                  slotInterval(now), candidates.size()));
    const auto coverageWindow = co_await foreignCoverageWindow(now);
    co_await fetchAndApply(requestFor(*target, false, coverageWindow), {});
    co_await finishRound();
}

FetchRequest AppState::requestFor(const Account& target, bool manual,
                                  std::optional<double> coverageWindow)
{
    FetchRequest request;
    request.account = target;
    request.manual = manual;
    request.effectiveInterval = m_effectiveInterval;
    request.coverageWindow = coverageWindow;
    request.onRevivalStart = [this, id = target.id] { markReviving(id); };
    return request;
}

Task<> AppState::fetchAndApply(FetchRequest request, std::chrono::milliseconds delay)
{
    const std::string id = request.account.id;
    co_await Sleep(m_parts.clock, delay);
    request.now = m_parts.clock.now();
    const FetchOutcome outcome = co_await m_parts.pipeline.fetch(std::move(request));
    apply(outcome, id);
}

Task<> AppState::finishRound()
{
    m_lastUpdated = m_parts.clock.now();
    m_notice.announce();
    co_await reloadHistory();
    co_await reloadAnchors();
    recomputeEffectiveInterval(m_parts.clock.now());
}

// So that a sibling can live on what this program fetches. One that only fails promises nothing.
// Nobody waits for it: the window is read on the same worker, behind it.
void AppState::claimHeartbeatIfProducing(Instant now)
{
    if (!ClaimGate::shouldClaim(m_parseFailStreak, AccountList::ids(pollableAccounts(now)))) {
        log(Tag::poller, "heartbeat claim withheld — every pollable account is parse-failing");
        return;
    }
    auto claim = [interval = m_effectiveInterval, now](PollerHeartbeatStore& heartbeat) {
        heartbeat.claim(interval, now);
    };
    m_parts.heartbeat.post(std::move(claim));
}

Task<std::optional<double>> AppState::foreignCoverageWindow(Instant now)
{
    auto read = [now](PollerHeartbeatStore& heartbeat) {
        return heartbeat.foreignCoverageWindow(now);
    };
    co_return co_await m_parts.heartbeat(std::move(read));
}

void AppState::markReviving(const std::string& id)
{
    m_states[id].revival = RevivalStatus::reviving;
    m_notice.announce();
}

void AppState::apply(const FetchOutcome& outcome, const std::string& id)
{
    const Account* known = account(id);
    AccountUsageState& state = m_states[id];
    state.isLoading = false;
    state.isOffline = outcome.isOffline;
    state.backoffUntil = outcome.backoffUntil;
    state.lastError = outcome.error;
    state.revival = outcome.revival;
    state.concludedAbout.reset();
    if ((outcome.error || outcome.revival) && known != nullptr)
        state.concludedAbout = known->tokenExpiresAt;
    if (outcome.usage) {
        state.usage = outcome.usage;
        state.source = outcome.source;
    }
    state.blockedUntil.reset();
    if (outcome.error && outcome.error->kind == Kind::forbidden)
        state.blockedUntil = m_parts.clock.now() + blockAfterForbidden;
    if (outcome.error && outcome.error->kind == Kind::decode)
        ++m_parseFailStreak[id];
    else if (outcome.usage &&
             (outcome.source == UsageSource::endpoint || outcome.source == UsageSource::cli))
        m_parseFailStreak.erase(id);
    m_notice.announce();
}

// --- Scans --------------------------------------------------------------------------------------

Task<> AppState::rescan()
{
    DiscoveryInputs inputs{m_parts.store.knownDirs(), serviceOverrides(m_parts.store.records())};
    const auto looked = inputs.knownDirs;
    DiscoveryResult result = co_await m_parts.discover(std::move(inputs));
    if (result.scanFailed)
        co_return;
    const auto hidden = hiddenDirs(m_parts.store.records());
    const auto existing = co_await m_parts.existingFolders(hidden);
    const auto before = AccountMerge::sharedIdentities(m_parts.store.records());
    auto read = co_await m_parts.loadSharedIdentities();
    const auto shared = withOwnChanges(std::move(read), before,
                                       AccountMerge::sharedIdentities(m_parts.store.records()));
    // One that was hidden meanwhile has not been asked about.
    m_parts.store.forgetVanishedRemovals([&](const std::string& dir) {
        return existing.contains(dir) ||
               std::find(hidden.begin(), hidden.end(), dir) == hidden.end();
    });
    m_lastFacts = std::move(result.facts);
    rederive(shared);
    if (!m_accounts.empty() || m_parts.store.knownDirs().empty())
        co_await prune(looked);
    co_await reloadHistory();
    co_await reloadAnchors();
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
    std::map<std::string, History> histories;
    for (const std::string& dir : AccountList::configDirs(m_accounts)) {
        auto load = [dir](UsageHistoryStore& history) { return history.load(dir); };
        auto loaded = co_await m_parts.stores.history(std::move(load));
        histories[dir] = std::move(loaded);
    }
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

// --- What the user does -------------------------------------------------------------------------

void AppState::setTracked(const std::string& id, bool tracked)
{
    m_parts.store.setTracked(id, tracked);
    rederive();
}

void AppState::setPinned(const std::string& id, bool pinned)
{
    m_parts.store.setPinned(id, pinned);
    rederive();
}

void AppState::rename(const Account& account, const std::string& name)
{
    const std::string trimmed(Text::trimmed(name));
    if (trimmed.empty() || trimmed == account.displayName)
        return;
    m_parts.store.rename(account.id, trimmed);
    rederive();
}

void AppState::reorder(const std::vector<std::size_t>& fromOffsets, std::size_t toOffset)
{
    const auto moved = AccountList::moved(AccountList::ordered(m_accounts), fromOffsets, toOffset);
    m_parts.store.reorder(AccountList::ids(moved));
    rederive();
}

void AppState::remove(const Account& account)
{
    m_parts.store.remove(account.id, account.email, account.org);
    rederive();
}

Task<> AppState::restore(std::string configDir)
{
    m_parts.store.restore(configDir);
    co_await rescan();
}

Task<> AppState::upsertManual(std::string configDir, std::optional<std::string> serviceOverride)
{
    m_parts.store.upsertManual(configDir, serviceOverride);
    co_await rescan();
}

Task<> AppState::setServiceOverride(std::string id, std::optional<std::string> service)
{
    m_parts.store.setServiceOverride(id, service);
    co_await rescan();
}

void AppState::setMenuBarMode(MenuBarMode mode)
{
    if (mode != m_menuBarMode)
        updatePreferences([&](Preferences& preferences) { preferences.menuBarMode = mode; });
}

void AppState::setUserInterval(double seconds)
{
    updatePreferences([&](Preferences& preferences) { preferences.userInterval = seconds; });
}

void AppState::updatePreferences(const std::function<void(Preferences&)>& change)
{
    Preferences changed = preferences();
    change(changed);
    const Preferences kept = m_parts.preferences.save(changed);
    m_menuBarMode = kept.menuBarMode;
    m_userInterval = kept.userInterval;
    recomputeEffectiveInterval(m_parts.clock.now()); // announces
}

// --- What is shown ------------------------------------------------------------------------------

bool AppState::isStale(const std::string& id, Instant now) const
{
    const auto* known = state(id);
    return known != nullptr && known->isStale(m_effectiveInterval, now);
}

std::optional<Instant> AppState::dataUpdatedAt() const
{
    std::vector<AccountUsageState> shown;
    for (const Account& each : AccountList::orderedTracked(m_accounts)) {
        if (const auto* known = state(each.id))
            shown.push_back(*known);
    }
    return DataAge::oldest(shown);
}

bool AppState::isRemoved(const std::string& configDir) const
{
    return m_parts.store.isRemoved(configDir);
}

} // namespace vellumor
