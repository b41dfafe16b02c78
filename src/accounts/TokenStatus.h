#pragma once

#include <string_view>

namespace vellumor {

// The health of an account's credential. The names of the cases are the words on disk and in the
// report.
enum class TokenStatus {
    readable,      // a token is there, and valid for at least another 60 seconds
    expired,       // it ends within 60 seconds, or has ended
    signedOut,     // the item is there, and Claude Code has emptied it
    needsApproval, // the user has not granted access to it
    notFound,      // no such item, or it cannot be read or understood
};

[[nodiscard]] std::string_view name(TokenStatus status);

} // namespace vellumor
