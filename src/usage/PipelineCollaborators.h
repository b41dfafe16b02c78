#pragma once

#include "accounts/Account.h"
#include "async/Task.h"
#include "usage/RateLimitLog.h"
#include "usage/TokenReviver.h"
#include "usage/UsageClient.h"
#include "usage/caches/VscodeStatusCache.h"
#include "usage/model/Usage.h"

#include <map>
#include <optional>
#include <string>

namespace vellumor {

// What the applications share about an account.
struct SharedReading {
    Usage usage;
    std::optional<Instant> backoffUntil;
};

// All that a UsagePipeline asks of others. Each task may take as long as it likes; whatever a store
// cannot do it keeps to itself. Main thread only.
class PipelineCollaborators {
public:
    virtual ~PipelineCollaborators() = default;

    [[nodiscard]] virtual bool isOnline() const = 0;
    [[nodiscard]] virtual bool localCacheOnly() const = 0;      // the user forbids calls
    [[nodiscard]] virtual bool tokenRevivalEnabled() const = 0; // the user allows revivals

    [[nodiscard]] virtual Task<std::optional<SharedReading>> readShared(std::string configDir) = 0;
    [[nodiscard]] virtual Task<> writeShared(Usage usage, std::string configDir) = 0;
    [[nodiscard]] virtual Task<> setBackoff(Instant until, std::string configDir) = 0;

    [[nodiscard]] virtual Task<std::map<std::string, Usage>> loadSnapshots() = 0;
    [[nodiscard]] virtual Task<> saveSnapshot(Usage usage, std::string configDir) = 0;

    [[nodiscard]] virtual Task<std::optional<VscodeStatusCache::Snapshot>>
    readVscode(std::string configDir) = 0;

    [[nodiscard]] virtual Task<> appendHistory(Usage usage, std::string configDir, Instant now) = 0;
    [[nodiscard]] virtual Task<> recordAnchors(Usage usage, std::string configDir) = 0;
    [[nodiscard]] virtual Task<> recordRateLimit(RateLimitEntry entry) = 0;

    // The one call of the endpoint.
    [[nodiscard]] virtual Task<FetchResult> fetchUsage(Account account) = 0;
    [[nodiscard]] virtual Task<TokenReviver::Attempt> revive(Account account, Instant now,
                                                             bool force) = 0;
    // When the account's credential ends as it stands now; nothing without one, or without a date.
    [[nodiscard]] virtual Task<std::optional<Instant>> credentialExpiry(Account account) = 0;
};

} // namespace vellumor
