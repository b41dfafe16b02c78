#pragma once

#include "base/Instant.h"
#include "base/JsonForward.h"

#include <optional>
#include <string>
#include <string_view>

namespace vellumor {

// What is kept of one crash report: enough to tell like crashes from others, and nothing of the
// user's. Its words come from fixed lists, but for the version.
struct CrashDigest {
    std::string incidentID; // of this one crash; empty when the report has none
    std::string signature;  // the same for crashes at the same place: eight hexadecimal digits
    std::string exceptionType;
    std::string signal;
    std::string area; // which part of the program: "poller", "usage", ..., "other"
    std::string crashedVersion;
    std::string uptime; // "launch", "short", "long" or "unknown"
    std::optional<Instant> crashedAt;
    std::string fileName;
    bool operator==(const CrashDigest&) const = default;

    // Nothing when the body tells of no exception. Everything else may be missing, of a wrong type
    // or absurd, and then counts as not told.
    [[nodiscard]] static std::optional<CrashDigest> make(const Json& header, const Json& body,
                                                         std::string fileName);

    // A frame without what changes from build to build and from place to place: the number of a
    // closure, and the words that tell how a compiler came to make the function.
    [[nodiscard]] static std::string normalize(std::string_view frame);
};

} // namespace vellumor
