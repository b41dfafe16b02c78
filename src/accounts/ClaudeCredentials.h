#pragma once

#include "accounts/TokenStatus.h"
#include "base/Instant.h"
#include "base/SecretBytes.h"
#include "platform/Keyring.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace vellumor {

// Why a credential could not be had.
struct KeychainError {
    enum class Kind { osStatus, notFound, userDenied, unexpectedData };

    Kind kind = Kind::notFound;
    std::int32_t status = 0; // with osStatus alone
    bool operator==(const KeychainError&) const = default;

    [[nodiscard]] std::string description() const;
};

// An OAuth access token. One owner; wiped when released; no copy, no printing, one way out that can
// be searched for.
class Token {
public:
    Token() = default;
    explicit Token(SecretBytes secret)
        : m_secret(std::move(secret))
    {
    }

    [[nodiscard]] bool empty() const { return m_secret.view().empty(); }
    // Called by the request builder alone.
    [[nodiscard]] std::string_view reveal() const { return m_secret.view(); }
    // Forgets the token and gives its memory, wiped, to hold the next one.
    [[nodiscard]] SecretBytes recycled() &&
    {
        m_secret.shrink(0);
        return std::move(m_secret);
    }

private:
    SecretBytes m_secret;
};

// What Claude Code keeps about one sign-in, as far as this program looks at it. The refresh token
// is never taken over.
struct ClaudeCredentials {
    Token accessToken;               // empty after a sign-out
    std::optional<double> expiresAt; // milliseconds since 1970
    std::vector<std::string> scopes;
    std::optional<std::string> subscriptionType;
    std::optional<std::string> rateLimitTier;

    [[nodiscard]] TokenStatus tokenStatus(Instant now) const;
    [[nodiscard]] std::optional<Instant> expiry() const;

    // One credential item, whichever source it came from: the status says what reading gave, the
    // secret is the JSON or its hexadecimal form. No copy of it is left behind.
    [[nodiscard]] static std::variant<ClaudeCredentials, KeychainError> decode(RawCredential raw);
};

} // namespace vellumor
