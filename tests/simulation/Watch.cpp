#include "simulation/Watch.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace vellumor::simulation {

namespace {

using namespace std::chrono_literals;

constexpr double shortestShareOfSlot = 0.9; // the jitter takes a tenth at most
constexpr double longestBackoff = 900.0;    // seconds
constexpr milliseconds betweenStarts{2000};
constexpr milliseconds blockLength = 1800s;
constexpr milliseconds betweenLooks{30'000};
constexpr std::size_t keptLines = 20;

milliseconds ofSeconds(double seconds)
{
    return std::chrono::round<milliseconds>(std::chrono::duration<double>(seconds));
}

} // namespace

Watch::Watch(Timeline& timeline, const Home& home, const Endpoint& endpoint)
    : m_timeline(timeline)
    , m_home(home)
    , m_endpoint(endpoint)
{
}

void Watch::follow(SimulatedProgram* program)
{
    m_program = program;
    m_lastTick = m_timeline.now();
    m_lastTickCall.reset();
    for (auto& [account, past] : m_past)
        past = {{}, {}, past.wait, 0, {}};
    if (program != nullptr)
        excuse(-1, recovery());
}

void Watch::excuse(int account, milliseconds delay)
{
    for (int each = 0; each < m_home.size(); ++each) {
        if (account == -1 || account == each)
            m_excusedUntil[each] = std::max(m_excusedUntil[each], m_timeline.now() + delay);
    }
}

void Watch::onRound(bool byHand)
{
    const milliseconds end = m_timeline.now() + m_home.size() * betweenStarts + 15s;
    m_rounds.push_back({end, byHand});
    m_last.reset();
    m_lastTick = m_timeline.now();
    if (!byHand)
        m_lastTickCall.reset();
    for (auto& [account, past] : m_past) {
        past.tick.reset(); // the turns begin anew
        // The 403 of a tick that is still under way is not known yet.
        if (byHand || (past.block && *past.block - blockLength >= m_lastTickEnd))
            past.block.reset();
    }
    ++m_figures.rounds;
}

void Watch::onTick()
{
    ++m_figures.ticks;
    m_lastTick = m_lastTickEnd = m_timeline.now();
    noteInterval();
}

void Watch::onCall(const Endpoint::Call& call)
{
    m_figures.refusals += call.status == 429 ? 1 : 0;
    if (call.caller == Endpoint::Caller::sibling) {
        ++m_figures.siblingCalls;
        return;
    }
    ++m_figures.calls;
    std::erase_if(m_recent, [&](milliseconds at) { return at <= call.at - 1s; });
    m_recent.push_back(call.at);
    m_figures.largestBurst = std::max(m_figures.largestBurst, static_cast<int>(m_recent.size()));
    const auto revived = m_revivedAt.find(call.account);
    const bool isRevival = revived != m_revivedAt.end() && call.at - revived->second < 1s;
    std::erase_if(m_rounds, [&](const Round& round) { return round.end <= call.at; });
    const bool isTick = m_rounds.empty() && !isRevival;
    noteInterval();
    judgeSpacing(call, isTick, isRevival);
    if (!isRevival)
        judgePermission(call);
    noteAnswer(call, isRevival);
    Past& past = m_past[call.account];
    if (isTick) {
        m_lastTickCall = call.at;
        m_leastSlot.reset();
        past.tick = call.at;
    } else {
        past.tick.reset();
    }
    past.leastInterval.reset();
    if (!isRevival)
        m_last = call;
}

void Watch::judgeSpacing(const Endpoint::Call& call, bool isTick, bool isRevival)
{
    const bool isCrowded = m_rounds.size() > 1 || (m_rounds.size() == 1 && m_rounds[0].byHand);
    if (m_last && m_last->account != call.account && call.at - m_last->at < betweenStarts &&
        !isRevival && !isCrowded)
        report("two accounts within two seconds", call.account);
    if (!isTick)
        return;
    if (m_lastTickCall && m_leastSlot &&
        call.at - *m_lastTickCall < shortestShareOfSlot * *m_leastSlot - 50ms)
        report("two requests within a slot", call.account);
    // Set back by hours, the clock makes the first one's last attempt the oldest, again and again.
    const Past& past = m_past[call.account];
    if (m_isWallClockSound && past.tick && past.leastInterval &&
        call.at - *past.tick < shortestShareOfSlot * *past.leastInterval - 50ms)
        report("two requests within an interval", call.account);
}

void Watch::judgePermission(const Endpoint::Call& call)
{
    if (m_program == nullptr || m_timeline.isFrozen()) {
        report("a request of a program that sleeps", call.account);
        return;
    }
    if (!m_program->isOnline())
        report("a request while offline", call.account);
    if (m_program->preferences().current().localCacheOnly)
        report("a request against the user's wish", call.account);
    if (!m_isWallClockSound)
        return;
    const Past& past = m_past[call.account];
    if (past.wait && call.at < *past.wait)
        report("a request during a backoff", call.account);
    if (past.block && call.at < *past.block)
        report("a request for a blocked account", call.account);
}

// The span is the effective interval after the first refusal, and doubles with each further one.
void Watch::noteAnswer(const Endpoint::Call& call, bool isRevival)
{
    Past& past = m_past[call.account];
    past.block.reset();
    // Of two that overlap the later outcome counts, and behind a renewed token it is an error as
    // others.
    if (call.status == 403 && m_rounds.empty() && !isRevival)
        past.block = call.at + blockLength;
    if (call.status == 429) {
        past.span = past.span > 0
                        ? std::min(2 * past.span, longestBackoff)
                        : std::min(m_program->state().effectiveInterval(), longestBackoff);
        past.wait = call.at + ofSeconds(past.span) - (isRevival ? 10s : 0s);
    } else if (call.status == 200 && m_endpoint.mood(call.account) == Endpoint::Mood::well) {
        past.span = 0;
        past.wait.reset();
    }
}

void Watch::noteInterval()
{
    if (m_program == nullptr)
        return;
    AppState& state = m_program->state();
    const Instant now = m_program->now();
    const auto share = ofSeconds(state.slotInterval(now));
    m_leastSlot = m_leastSlot ? std::min(*m_leastSlot, share) : share;
    const auto effective = ofSeconds(state.effectiveInterval());
    const auto inTurn = state.pollableAccounts(now).size() + state.revivableAccounts(now).size();
    for (auto& [account, past] : m_past) {
        past.leastInterval =
            past.leastInterval ? std::min(*past.leastInterval, effective) : effective;
        if (inTurn < m_inTurn) // the slot of one that has left is the next one's
            past.tick.reset();
    }
    m_inTurn = inTurn;
}

void Watch::look()
{
    if (m_program == nullptr || m_timeline.isFrozen() || !m_program->isOnline()) {
        m_lastTick = m_timeline.now();
        excuse(-1, recovery());
        return;
    }
    m_figures.hoursAwake += std::chrono::duration<double, std::ratio<3600>>(betweenLooks).count();
    noteInterval();
    const auto patience = ofSeconds(1.1 * m_program->state().effectiveInterval()) + 60s;
    if (m_timeline.now() - m_lastTick > patience) {
        report("the loop stands still", -1);
        m_lastTick = m_timeline.now();
    }
    for (int account = 0; account < m_home.size(); ++account)
        lookAt(account);
}

void Watch::lookAt(int account)
{
    if (!m_home.isThere(account)) // it comes back as a new one
        m_past[account].block.reset();
    if (isTroubled(account))
        excuse(account, recovery());
    if (m_timeline.now() < m_excusedUntil[account] || !m_isWallClockSound)
        return;
    const auto id = idOf(account);
    const auto* state = id ? m_program->state().state(*id) : nullptr;
    if (state == nullptr || !state->usage) {
        report("an account that is well has no reading", account);
        excuse(account, recovery());
        return;
    }
    const Instant now = m_program->now();
    const double age = secondsBetween(state->usage->fetchedAt, now);
    m_ageSum += age;
    ++m_ages;
    m_figures.oldestAge = std::max(m_figures.oldestAge, age);
    if (state->isStale(m_program->state().effectiveInterval(), now))
        report("an account that is well has a stale reading", account);
    else if (state->lastError)
        report("an account that is well shows an error", account);
    else
        return;
    excuse(account, recovery());
}

bool Watch::isTroubled(int account) const
{
    if (!m_home.isThere(account) || !m_home.isSignedIn(account))
        return true;
    if (m_timeline.trueTime() + 61s >= m_home.expiresAt(account))
        return true;
    if (m_endpoint.mood(account) != Endpoint::Mood::well)
        return true;
    if (m_program->preferences().current().localCacheOnly)
        return true;
    const auto past = m_past.find(account);
    if (past != m_past.end() && past->second.wait && *past->second.wait > m_timeline.now())
        return true;
    const auto id = idOf(account);
    const auto* state = id ? m_program->state().state(*id) : nullptr;
    if (state == nullptr)
        return false;
    const Instant now = m_program->now();
    return state->isBlocked(now) || (state->backoffUntil && *state->backoffUntil > now);
}

// A scan each interval finds what has been repaired, and the account's turn comes after one more;
// an interval has a minute for each account that may be polled by then.
milliseconds Watch::recovery() const
{
    return ofSeconds(2.5 * 60.0 * m_home.size()) + 180s;
}

std::optional<std::string> Watch::idOf(int account) const
{
    const std::string configDir = m_home.configDir(account);
    for (const Account& each : m_program->state().accounts()) {
        if (each.configDir == configDir)
            return each.id;
    }
    return std::nullopt;
}

void Watch::report(const std::string& promise, int account)
{
    if (m_broken.size() < keptLines) {
        const double hours =
            std::chrono::duration<double, std::ratio<3600>>(m_timeline.now()).count();
        m_broken.push_back(fmt::format("{} (account {}, hour {:.3f})", promise, account, hours));
    }
}

Figures Watch::figures() const
{
    Figures figures = m_figures;
    figures.accounts = m_home.size();
    figures.meanAge = m_ages == 0 ? 0 : m_ageSum / m_ages;
    return figures;
}

} // namespace vellumor::simulation
