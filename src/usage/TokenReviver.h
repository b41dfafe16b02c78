#pragma once

#include "accounts/Account.h"
#include "async/Mutex.h"
#include "async/Task.h"

#include <functional>
#include <map>
#include <optional>
#include <string>

namespace vellumor {

// Lets Claude Code renew an expired token: runs it once, headless, in the account's config
// directory. What it prints is thrown away; what counts is the credential that it writes. Main
// thread only; any number of accounts may be revived at a time, one account at most once in
// minInterval unless by force.
class TokenReviver {
public:
    enum class Attempt {
        failed,
        completed, // it ended well, which proves nothing about the credential
        throttled,
        binaryUnresolved,
    };

    static constexpr double hour = 3600.0;

    double minInterval = hour; // seconds between two attempts for one account
    std::function<std::optional<std::string>()> pathOverride; // the user's choice, if any
    std::function<Task<std::optional<std::string>>(std::optional<std::string> preference)>
        resolveBinary;
    std::function<Task<int>(std::string binary, std::string configDir, std::string workDir)>
        runUsage; // gives the exit status
    std::string workDir;

    // `force` lifts the throttle.
    [[nodiscard]] Task<Attempt> revive(Account account, Instant now, bool force);

    // The command line for a shell. Every path reaches it as that one path.
    [[nodiscard]] static std::string
    usageCommand(const std::string& binary, const std::string& configDir, const std::string& home);

private:
    struct Cached {
        std::optional<std::string> key;
        std::optional<std::string> path;
    };

    [[nodiscard]] bool isThrottled(const Account& account, Instant now) const;
    [[nodiscard]] Task<std::optional<std::string>> binary();

    std::map<std::string, Instant> m_lastAttempt; // by config directory
    std::optional<Cached> m_cachedBinary;         // nothing: never searched
    Mutex m_search;                               // one search at a time
};

} // namespace vellumor
