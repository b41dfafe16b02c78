#pragma once

#include "accounts/TokenStatus.h"
#include "base/Instant.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace vellumor {

// What a scan found out about one config directory.
struct DiscoveredFacts {
    std::string configDir; // absolute, in composed Unicode (NFC)
    std::optional<std::string> email;
    std::optional<std::string> org;
    std::optional<std::string> displayName;
    std::optional<std::string> plan;
    std::optional<std::string> resolvedService;
    TokenStatus tokenStatus = TokenStatus::notFound;
    std::optional<Instant> tokenExpiresAt;
    bool operator==(const DiscoveredFacts&) const = default;
};

// What the program tells a scan.
struct DiscoveryInputs {
    std::vector<std::string> knownDirs; // of accounts that are not hidden; they may lie anywhere
    std::map<std::string, std::string> overrides; // config directory to the service forced on it
};

struct DiscoveryResult {
    std::vector<DiscoveredFacts> facts; // by configDir, ascending
    bool scanFailed = false; // the home folder could not be listed: the facts say nothing
};

} // namespace vellumor
