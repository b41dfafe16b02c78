#include "usage/LiveCollaborators.h"

#include <utility>

namespace vellumor {

LiveCollaborators::LiveCollaborators(Parts parts)
    : m_parts(std::move(parts))
{
}

bool LiveCollaborators::isOnline() const
{
    return m_parts.network.isOnline();
}

bool LiveCollaborators::localCacheOnly() const
{
    return m_parts.localCacheOnly();
}

bool LiveCollaborators::tokenRevivalEnabled() const
{
    return m_parts.tokenRevivalEnabled();
}

Task<std::optional<SharedReading>> LiveCollaborators::readShared(std::string configDir)
{
    auto read = [dir = std::move(configDir)](SharedCache& cache) -> std::optional<SharedReading> {
        const auto file = cache.read(dir);
        if (!file)
            return std::nullopt;
        return SharedReading{file->usage(), file->backoffUntil};
    };
    co_return co_await m_parts.stores.cache(std::move(read));
}

Task<> LiveCollaborators::writeShared(Usage usage, std::string configDir)
{
    auto write = [usage = std::move(usage), dir = std::move(configDir)](SharedCache& cache) {
        cache.write(usage, dir, std::nullopt);
    };
    co_await m_parts.stores.cache(std::move(write));
}

Task<> LiveCollaborators::setBackoff(Instant until, std::string configDir)
{
    auto set = [until, dir = std::move(configDir)](SharedCache& cache) {
        cache.setBackoff(until, dir); // what it cannot write holds in memory all the same
    };
    co_await m_parts.stores.cache(std::move(set));
}

Task<std::map<std::string, Usage>> LiveCollaborators::loadSnapshots()
{
    auto load = [](UsageSnapshotStore& snapshots) { return snapshots.load(); };
    co_return co_await m_parts.stores.snapshots(std::move(load));
}

Task<> LiveCollaborators::saveSnapshot(Usage usage, std::string configDir)
{
    auto save = [usage = std::move(usage), dir = std::move(configDir)](
                    UsageSnapshotStore& snapshots) { snapshots.save(usage, dir); };
    co_await m_parts.stores.snapshots(std::move(save));
}

Task<std::optional<VscodeStatusCache::Snapshot>>
LiveCollaborators::readVscode(std::string configDir)
{
    auto read = [dir = std::move(configDir)] { return VscodeStatusCache::read(dir); };
    co_return co_await m_parts.accountWorker.run(std::move(read));
}

Task<> LiveCollaborators::appendHistory(Usage usage, std::string configDir, Instant now)
{
    auto append = [usage = std::move(usage), dir = std::move(configDir),
                   now](UsageHistoryStore& history) { history.append(usage, dir, now); };
    co_await m_parts.stores.history(std::move(append));
}

Task<> LiveCollaborators::recordAnchors(Usage usage, std::string configDir)
{
    auto record = [usage = std::move(usage), dir = std::move(configDir)](
                      ResetAnchorStore& anchors) { anchors.record(usage, dir); };
    co_await m_parts.stores.anchors(std::move(record));
}

Task<> LiveCollaborators::recordRateLimit(RateLimitEntry entry)
{
    auto record = [entry = std::move(entry)](RateLimitLog& entries) { entries.record(entry); };
    co_await m_parts.stores.rateLimitLog(std::move(record));
}

Task<FetchResult> LiveCollaborators::fetchUsage(Account account)
{
    return m_parts.client.fetch(std::move(account));
}

Task<TokenReviver::Attempt> LiveCollaborators::revive(Account account, Instant now, bool force)
{
    return m_parts.reviver.revive(std::move(account), now, force);
}

Task<std::optional<Instant>> LiveCollaborators::credentialExpiry(Account account)
{
    if (!account.resolvedService)
        co_return std::nullopt;
    auto read = [this, service = *account.resolvedService]() -> std::optional<Instant> {
        const auto result = m_parts.readCredentials(service);
        const auto* credentials = std::get_if<ClaudeCredentials>(&result);
        return credentials != nullptr ? credentials->expiry() : std::nullopt;
    };
    co_return co_await m_parts.accountWorker.run(std::move(read));
}

} // namespace vellumor
