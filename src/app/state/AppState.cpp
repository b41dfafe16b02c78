#include "app/state/AppState.h"

#include "app/state/AccountList.h"
#include "app/state/OutcomeRecord.h"
#include "app/state/Stagger.h"
#include "async/Sleep.h"
#include "base/Log.h"
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

} // namespace

AppState::AppState(Parts parts)
    : m_parts(std::move(parts))
    , m_notice(m_parts.clock)
    , m_menuBarMode(m_parts.preferences.current().menuBarMode)
    , m_userInterval(m_parts.preferences.current().userInterval)
{
    m_parts.notifications.onDeliver = [this] { m_parts.telemetry.noteNotification(); };
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
    co_await archiveDueReceipts(m_parts.clock.now());
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
    recordOutcome(m_parts.telemetry, outcome);
    if (known != nullptr)
        tellOf(*known, outcome);
    m_notice.announce();
}

// With the history as it was published last: it ends with the reading before this one.
void AppState::tellOf(const Account& known, const FetchOutcome& outcome)
{
    if (outcome.usage) {
        const UsageSamples none;
        const auto history = m_historyByDir.find(known.configDir);
        m_parts.notifications.observe(known, *outcome.usage, outcome.source, preferences(),
                                      history == m_historyByDir.end() ? none : *history->second,
                                      m_effectiveInterval);
    }
    m_parts.notifications.noteOutcome(known, outcome, preferences());
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
