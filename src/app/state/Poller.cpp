#include "app/state/Poller.h"

#include "app/state/AccountList.h"
#include "async/OrEnd.h"

#include <algorithm>
#include <cmath>

namespace vellumor {

namespace {

using Kind = UsageFetchError::Kind;

constexpr double scanInterval = 3600.0; // seconds

bool isInTrouble(const Account& account, const AccountUsageState* state)
{
    if (account.tokenStatus != TokenStatus::readable)
        return true;
    if (state == nullptr || !state->lastError)
        return false;
    const Kind kind = state->lastError->kind;
    return kind == Kind::keychain || kind == Kind::noService || kind == Kind::unauthorized;
}

} // namespace

Poller::Poller(Parts parts)
    : m_parts(std::move(parts))
    , m_lastDiscovery(m_parts.clock.now())
{
}

void Poller::startLoop(bool immediate)
{
    stopLoop();
    if (!m_parts.isOnline())
        return;
    m_isRunning = true;
    m_current = orEnd(begin(m_loop, immediate));
}

void Poller::stopLoop()
{
    ++m_loop;
    m_next.reset();
    m_isRunning = false;
}

void Poller::observeNetwork(bool isOnline)
{
    if (isOnline)
        startLoop(true);
    else
        stopLoop();
}

Task<> Poller::begin(int loop, bool immediate)
{
    if (immediate)
        co_await tick(true);
    scheduleNext(loop);
}

Task<> Poller::tickAndGoOn(int loop)
{
    co_await tick(false);
    scheduleNext(loop);
}

void Poller::scheduleNext(int loop)
{
    if (loop != m_loop)
        return;
    const double seconds =
        m_parts.appState.slotInterval(m_parts.clock.now()) * (1.0 + m_parts.jitter());
    const std::chrono::milliseconds delay(std::llround(seconds * 1000));
    m_next = m_parts.clock.after(delay, [this, loop] { m_current = orEnd(tickAndGoOn(loop)); });
}

Task<> Poller::tick(bool full)
{
    if (isScanDue(m_parts.clock.now())) {
        co_await m_parts.appState.rescan();
        m_lastDiscovery = m_parts.clock.now();
    }
    if (full)
        co_await m_parts.appState.refresh(false);
    else
        co_await m_parts.appState.refreshNext();
    co_await m_parts.afterTick(m_parts.clock.now());
}

bool Poller::isScanDue(Instant now) const
{
    const double elapsed = secondsBetween(m_lastDiscovery, now);
    return elapsed >= scanInterval ||
           (needsAttention(now) && elapsed >= m_parts.appState.effectiveInterval());
}

// An account whose sign-in is in trouble may be well again: Claude Code may have repaired it.
bool Poller::needsAttention(Instant now) const
{
    const auto tracked = AccountList::orderedTracked(m_parts.appState.accounts());
    return std::any_of(tracked.begin(), tracked.end(), [&](const Account& account) {
        const auto* state = m_parts.appState.state(account.id);
        return !(state != nullptr && state->isBlocked(now)) && isInTrouble(account, state);
    });
}

} // namespace vellumor
