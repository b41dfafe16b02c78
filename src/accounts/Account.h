#pragma once

#include "accounts/TokenStatus.h"
#include "base/Instant.h"

#include <optional>
#include <string>

namespace vellumor {

// One Claude Code config directory with its credential, as the program works with it; made anew by
// each merge.
struct Account {
    std::string id; // six random characters; the identity
    std::string displayName;
    std::string configDir; // absolute, in composed Unicode (NFC)
    bool tracked = true;   // shown and polled
    bool pinned = false;   // drawn in the panel
    int order = 0;         // ascending
    std::optional<std::string> keychainServiceOverride;
    std::optional<std::string> email;
    std::optional<std::string> org;
    std::optional<std::string> plan; // "Max", or the credential's own word
    std::optional<std::string> resolvedService;
    TokenStatus tokenStatus = TokenStatus::notFound;
    std::optional<Instant> tokenExpiresAt;

    bool operator==(const Account&) const = default;
};

} // namespace vellumor
