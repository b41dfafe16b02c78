#include "usage/UsageFetchError.h"

#include <fmt/format.h>

#include <cmath>

namespace vellumor {

std::string UsageFetchError::description() const
{
    switch (kind) {
    case Kind::keychain:
        return "keychain: " + detail;
    case Kind::rateLimited:
        if (!retryAfter)
            return "rate limited (429)";
        // The server may send any number, "1e400" too, so it is never made an integer.
        return fmt::format("rate limited (429, Retry-After {:.0f}s)",
                           std::trunc(*retryAfter) + 0.0);
    case Kind::http:
        return fmt::format("HTTP {}", status);
    case Kind::decode:
        return "decode: " + detail;
    case Kind::transport:
        return "transport: " + detail;
    case Kind::noService:
        return "no Keychain service resolved for this account";
    case Kind::unauthorized:
        return "unauthorized (401) — token expired/invalid";
    case Kind::forbidden:
        break;
    }
    return "forbidden (403) — account-level problem";
}

} // namespace vellumor
