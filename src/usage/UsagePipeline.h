#pragma once

#include "accounts/Account.h"
#include "async/Task.h"
#include "base/Clock.h"
#include "usage/FetchOutcome.h"
#include "usage/PipelineCollaborators.h"

#include <functional>
#include <map>
#include <optional>
#include <string>

namespace vellumor {

// One question about one account.
struct FetchRequest {
    Account account;
    Instant now{};
    bool manual = false;          // the user asked for it: no cached reading is fresh enough
    double effectiveInterval = 0; // seconds between two polls of the account
    std::optional<double> coverageWindow; // seconds for which a shared reading counts as fresh
    std::function<void()> onRevivalStart; // may be empty; called just before a revival
};

// The best reading of one account that can be had now, at the lowest cost: the endpoint is called
// only when the token lives, the machine is online, the user allows it, no backoff runs and what
// the other applications have left is not fresh. A failure never loses what is known already. Main
// thread only. Fetches may overlap, of one account too: the state is read and written only between
// two waits.
class UsagePipeline {
public:
    // Everything borrowed outlives the pipeline, and the pipeline its fetches.
    UsagePipeline(PipelineCollaborators& others, const Clock& clock);

    [[nodiscard]] Task<FetchOutcome> fetch(FetchRequest request);

    // Whether a shared reading of time `at` can stand for a new one.
    [[nodiscard]] static bool isFresh(Instant at, Instant now,
                                      std::optional<double> coverageWindow);

private:
    // What is known before any call.
    struct Known {
        std::optional<Usage> sharedUsage;
        std::optional<Usage> merged;
        std::optional<UsageSource> source;
        std::optional<Instant> activeBackoff;
        bool isOnline = true;
        bool isLocalOnly = false;
    };
    // The call of the endpoint before, of any account.
    struct Call {
        Instant at{};
        std::string configDir;
    };

    [[nodiscard]] Task<Known> gather(std::string configDir, Instant now);
    [[nodiscard]] Task<FetchOutcome> fetchExpired(FetchRequest request, Known known);
    [[nodiscard]] Task<FetchOutcome> fetchLive(FetchRequest request, Known known);
    [[nodiscard]] Task<FetchOutcome> revive(FetchRequest request, Known known);
    [[nodiscard]] Task<FetchOutcome> retryRevived(FetchRequest request, Known known);
    [[nodiscard]] Task<Instant> backOff(FetchRequest request, const char* trigger,
                                        std::optional<Call> previous, UsageFetchError error);
    [[nodiscard]] Task<> commitSuccess(Usage usage, std::string configDir, Instant now);

    [[nodiscard]] std::optional<Instant> activeBackoff(const std::string& configDir,
                                                       const std::optional<SharedReading>& shared,
                                                       Instant now) const;
    [[nodiscard]] std::optional<Call> noteCall(const std::string& configDir);

    PipelineCollaborators& m_others;
    const Clock& m_clock;
    std::map<std::string, double> m_backoffSpan;         // the last one, in seconds, by directory
    std::map<std::string, Instant> m_backoffUntilMemory; // what the shared cache is told, too
    std::optional<Call> m_lastRequest;                   // for the log alone
};

} // namespace vellumor
