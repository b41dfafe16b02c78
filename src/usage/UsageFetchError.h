#pragma once

#include <optional>
#include <string>

namespace vellumor {

// Why a fetch brought no reading. The descriptions are what the user and the report read; none ever
// holds a token.
struct UsageFetchError {
    enum class Kind {
        keychain,    // detail: why the credential could not be read
        rateLimited, // 429; retryAfter as the server gave it
        http,        // any other status
        decode,      // 200 with a body that is no reading; detail: why
        transport,   // no answer; detail: why
        noService,
        unauthorized, // 401
        forbidden,    // 403
    };

    Kind kind = Kind::transport;
    std::string detail;
    std::optional<double> retryAfter; // seconds; may be zero, negative or infinite
    int status = 0;                   // with http alone

    bool operator==(const UsageFetchError&) const = default;

    [[nodiscard]] std::string description() const;
};

} // namespace vellumor
