#include "usage/UsagePipeline.h"

#include "base/Log.h"

#include <algorithm>
#include <utility>

namespace vellumor {

namespace {

using Kind = UsageFetchError::Kind;

constexpr double leastFreshness = 90.0;     // seconds
constexpr double toleratedClockSkew = 60.0; // seconds
constexpr double longestBackoff = 900.0;    // seconds

UsageFetchError unauthorized()
{
    UsageFetchError error;
    error.kind = Kind::unauthorized;
    return error;
}

FetchOutcome fresh(Usage usage, UsageSource source)
{
    FetchOutcome outcome;
    outcome.usage = std::move(usage);
    outcome.source = source;
    return outcome;
}

std::chrono::microseconds microseconds(double seconds)
{
    return std::chrono::round<std::chrono::microseconds>(std::chrono::duration<double>(seconds));
}

} // namespace

UsagePipeline::UsagePipeline(PipelineCollaborators& others, const Clock& clock)
    : m_others(others)
    , m_clock(clock)
{
}

bool UsagePipeline::isFresh(Instant at, Instant now, std::optional<double> coverageWindow)
{
    const double age = secondsBetween(at, now);
    return age >= -toleratedClockSkew &&
           age < std::max(coverageWindow.value_or(leastFreshness), leastFreshness);
}

Task<FetchOutcome> UsagePipeline::fetch(FetchRequest request)
{
    const Known known = co_await gather(request.account.configDir, request.now);
    FetchOutcome local;
    local.usage = known.merged;
    local.source = known.source;
    if (request.account.tokenStatus == TokenStatus::expired)
        co_return co_await fetchExpired(std::move(request), known);
    if (request.account.tokenStatus == TokenStatus::signedOut) {
        log(Tag::pipeline, request.account.displayName,
            "signed out → sign-in needed (no endpoint call)");
        local.error = unauthorized();
        local.revival = RevivalStatus::needsSignIn;
        co_return local;
    }
    if (!request.manual && known.sharedUsage &&
        isFresh(known.sharedUsage->fetchedAt, request.now, request.coverageWindow))
        co_return fresh(*known.sharedUsage, UsageSource::sharedCache);
    if (!known.isOnline || known.isLocalOnly || known.activeBackoff) {
        local.isOffline = !known.isOnline;
        local.backoffUntil = known.activeBackoff;
        co_return local;
    }
    co_return co_await fetchLive(std::move(request), known);
}

Task<UsagePipeline::Known> UsagePipeline::gather(std::string configDir, Instant now)
{
    Known known;
    auto shared = co_await m_others.readShared(configDir);
    if (shared)
        known.sharedUsage = std::move(shared->usage);
    known.activeBackoff = activeBackoff(configDir, shared, now);
    known.isOnline = m_others.isOnline();
    known.isLocalOnly = m_others.localCacheOnly();
    std::optional<Usage> base = known.sharedUsage;
    if (!base) {
        auto snapshots = co_await m_others.loadSnapshots();
        if (auto entry = snapshots.extract(configDir))
            base = std::move(entry.mapped());
    }
    const auto vscode = co_await m_others.readVscode(configDir);
    const bool isVscodeNewer = vscode && (!base || vscode->updatedAt > base->fetchedAt);
    known.merged = VscodeStatusCache::merge(std::move(base), vscode);
    if (!known.merged)
        co_return known;
    if (isVscodeNewer)
        known.source = UsageSource::vscodeCache;
    else
        known.source = known.sharedUsage ? UsageSource::sharedCache : UsageSource::snapshot;
    co_return known;
}

// The token is known to be dead, so no call is spent on it.
Task<FetchOutcome> UsagePipeline::fetchExpired(FetchRequest request, Known known)
{
    if (!known.isOnline || known.isLocalOnly) {
        FetchOutcome outcome;
        outcome.usage = std::move(known.merged);
        outcome.source = known.source;
        outcome.isOffline = !known.isOnline;
        co_return outcome;
    }
    log(Tag::pipeline, request.account.displayName,
        "token known-expired → revival path (no endpoint call)");
    co_return co_await revive(std::move(request), std::move(known));
}

Task<FetchOutcome> UsagePipeline::fetchLive(FetchRequest request, Known known)
{
    const Account& account = request.account;
    const char* const trigger = request.manual ? "manual" : "auto";
    log(Tag::pipeline, account.displayName, std::string("endpoint fetch (") + trigger + ")");
    auto previous = noteCall(account.configDir);
    FetchResult result = co_await m_others.fetchUsage(account);
    if (auto* usage = std::get_if<Usage>(&result)) {
        co_await commitSuccess(*usage, account.configDir, request.now);
        co_return fresh(std::move(*usage), UsageSource::endpoint);
    }
    const auto& error = std::get<UsageFetchError>(result);
    if (error.kind == Kind::unauthorized) {
        log(Tag::pipeline, account.displayName,
            "endpoint 401 (expired since discovery) → revival safety net");
        co_return co_await revive(std::move(request), std::move(known));
    }
    FetchOutcome outcome;
    outcome.usage = std::move(known.merged);
    outcome.source = known.source;
    outcome.error = error;
    if (error.kind == Kind::rateLimited)
        outcome.backoffUntil =
            co_await backOff(std::move(request), trigger, std::move(previous), error);
    co_return outcome;
}

Task<FetchOutcome> UsagePipeline::revive(FetchRequest request, Known known)
{
    FetchOutcome outcome;
    outcome.usage = known.merged;
    outcome.source = known.source;
    outcome.error = unauthorized();
    if (!m_others.tokenRevivalEnabled()) {
        outcome.revival = RevivalStatus::disabled;
        co_return outcome;
    }
    if (request.onRevivalStart)
        request.onRevivalStart();
    switch (co_await m_others.revive(request.account, request.now, request.manual)) {
    case TokenReviver::Attempt::completed:
        co_return co_await retryRevived(std::move(request), std::move(known));
    case TokenReviver::Attempt::binaryUnresolved:
        outcome.revival = RevivalStatus::unavailable;
        break;
    case TokenReviver::Attempt::throttled:
    case TokenReviver::Attempt::failed:
        outcome.revival = RevivalStatus::retrying;
        break;
    }
    co_return outcome;
}

// Claude Code has ended well; whether it has renewed the token is another matter.
Task<FetchOutcome> UsagePipeline::retryRevived(FetchRequest request, Known known)
{
    const Account& account = request.account;
    FetchOutcome outcome;
    outcome.usage = std::move(known.merged);
    outcome.source = known.source;
    outcome.error = unauthorized();
    outcome.revival = RevivalStatus::retrying;
    const auto after = co_await m_others.credentialExpiry(account);
    if (after && after == account.tokenExpiresAt) {
        log(Tag::pipeline, account.displayName,
            "/usage ran clean but the credential is unchanged — refresh didn't happen (transient) "
            "→ retrying");
        co_return outcome;
    }
    auto previous = noteCall(account.configDir);
    FetchResult result = co_await m_others.fetchUsage(account);
    if (auto* usage = std::get_if<Usage>(&result)) {
        co_await commitSuccess(*usage, account.configDir, request.now);
        outcome = fresh(std::move(*usage), UsageSource::cli);
        outcome.revival = RevivalStatus::succeeded;
        co_return outcome;
    }
    const auto& error = std::get<UsageFetchError>(result);
    if (error.kind == Kind::unauthorized)
        outcome.revival = RevivalStatus::needsSignIn;
    if (error.kind == Kind::rateLimited) {
        outcome.error = error;
        outcome.backoffUntil =
            co_await backOff(std::move(request), "revival", std::move(previous), error);
    }
    co_return outcome;
}

// The span doubles from one refusal to the next; what the server asks for is noted, and no more.
Task<Instant> UsagePipeline::backOff(FetchRequest request, const char* trigger,
                                     std::optional<Call> previous, UsageFetchError error)
{
    const std::string& configDir = request.account.configDir;
    const auto last = m_backoffSpan.find(configDir);
    const double span = std::min(
        last == m_backoffSpan.end() ? request.effectiveInterval : 2 * last->second, longestBackoff);
    const Instant until = request.now + microseconds(span);
    m_backoffSpan[configDir] = span;
    m_backoffUntilMemory[configDir] = until;
    co_await m_others.setBackoff(until, configDir);
    RateLimitEntry entry;
    entry.at = request.now;
    entry.configDir = configDir;
    entry.trigger = trigger;
    if (previous) {
        entry.sinceLastRequestSeconds = secondsBetween(previous->at, request.now);
        entry.lastRequestConfigDir = previous->configDir;
    }
    entry.effectiveIntervalSeconds = request.effectiveInterval;
    entry.backoffSeconds = span;
    entry.retryAfterSeconds = error.retryAfter;
    co_await m_others.recordRateLimit(std::move(entry));
    co_return until;
}

Task<> UsagePipeline::commitSuccess(Usage usage, std::string configDir, Instant now)
{
    m_backoffSpan.erase(configDir);
    m_backoffUntilMemory.erase(configDir);
    co_await m_others.writeShared(usage, configDir);
    co_await m_others.saveSnapshot(usage, configDir);
    co_await m_others.appendHistory(usage, configDir, now);
    co_await m_others.recordAnchors(usage, configDir);
}

// The later of what the shared cache and memory say; a moment that has passed counts for nothing.
std::optional<Instant> UsagePipeline::activeBackoff(const std::string& configDir,
                                                    const std::optional<SharedReading>& shared,
                                                    Instant now) const
{
    std::optional<Instant> latest = shared ? shared->backoffUntil : std::nullopt;
    const auto remembered = m_backoffUntilMemory.find(configDir);
    if (remembered != m_backoffUntilMemory.end())
        latest = latest ? std::max(*latest, remembered->second) : remembered->second;
    return latest && *latest > now ? latest : std::nullopt;
}

// Gives the call before.
std::optional<UsagePipeline::Call> UsagePipeline::noteCall(const std::string& configDir)
{
    return std::exchange(m_lastRequest, Call{m_clock.now(), configDir});
}

} // namespace vellumor
