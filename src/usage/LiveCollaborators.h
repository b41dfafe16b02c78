#pragma once

#include "async/Worker.h"
#include "usage/NetworkMonitor.h"
#include "usage/PipelineCollaborators.h"
#include "usage/UsageStores.h"

#include <functional>

namespace vellumor {

// What the pipeline of the running program works with: the stores on their worker, credentials on
// the worker that may be held up, the endpoint and the reviver.
class LiveCollaborators final : public PipelineCollaborators {
public:
    struct Parts {
        UsageStores& stores;
        Worker& accountWorker; // for what lies with the accounts, and may hang there
        UsageClient& client;
        TokenReviver& reviver;
        const NetworkMonitor& network;
        UsageClient::ReadCredentials readCredentials;
        std::function<bool()> localCacheOnly;
        std::function<bool()> tokenRevivalEnabled;
    };

    // Everything borrowed outlives it.
    explicit LiveCollaborators(Parts parts);

    [[nodiscard]] bool isOnline() const override;
    [[nodiscard]] bool localCacheOnly() const override;
    [[nodiscard]] bool tokenRevivalEnabled() const override;
    [[nodiscard]] Task<std::optional<SharedReading>> readShared(std::string configDir) override;
    [[nodiscard]] Task<> writeShared(Usage usage, std::string configDir) override;
    [[nodiscard]] Task<> setBackoff(Instant until, std::string configDir) override;
    [[nodiscard]] Task<std::map<std::string, Usage>> loadSnapshots() override;
    [[nodiscard]] Task<> saveSnapshot(Usage usage, std::string configDir) override;
    [[nodiscard]] Task<std::optional<VscodeStatusCache::Snapshot>>
    readVscode(std::string configDir) override;
    [[nodiscard]] Task<> appendHistory(Usage usage, std::string configDir, Instant now) override;
    [[nodiscard]] Task<> recordAnchors(Usage usage, std::string configDir) override;
    [[nodiscard]] Task<> recordRateLimit(RateLimitEntry entry) override;
    [[nodiscard]] Task<FetchResult> fetchUsage(Account account) override;
    [[nodiscard]] Task<TokenReviver::Attempt> revive(Account account, Instant now,
                                                     bool force) override;
    [[nodiscard]] Task<std::optional<Instant>> credentialExpiry(Account account) override;

private:
    Parts m_parts;
};

} // namespace vellumor
