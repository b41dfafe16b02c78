#pragma once

#include "telemetry/TelemetryEvent.h"
#include "usage/model/SuppressedKinds.h"

#include <string_view>

// TelemetryScrubber: the last guard before an event leaves. A value that could tell of a person, a
// machine or a secret goes as a whole, and its key with it; nothing is edited. Pure; linear in the
// length of the text.
namespace vellumor::TelemetryScrubber {

// The words that must not leave, as digests.
using Digests = SuppressedKinds::Digests;

// What may leave of `properties`. Keys are not looked at: they are the program's own.
[[nodiscard]] TelemetryProperties scrub(const TelemetryProperties& properties,
                                        Digests suppressed = SharedLists::suppressedKindHashes);

// A mail address or suppressed word in it, a path, an identifier or something like a secret. Bytes
// that are not UTF-8 could not be sent, and go too.
[[nodiscard]] bool mustDrop(std::string_view value,
                            Digests suppressed = SharedLists::suppressedKindHashes);

// "name@domain.tld" anywhere.
[[nodiscard]] bool holdsAddress(std::string_view value);

// It begins at the root or in the home folder, or a folder of people or of the system is in it.
[[nodiscard]] bool looksLikeAbsolutePath(std::string_view value);

// It is a UUID, and nothing else.
[[nodiscard]] bool isUuid(std::string_view value);

// It begins as tokens do, or 32 characters of a token stand in a row in it.
[[nodiscard]] bool looksLikeSecret(std::string_view value);

// The value or one word of it is suppressed. A word is letters, digits and "_" in a row.
[[nodiscard]] bool forwardsCodename(std::string_view value,
                                    Digests suppressed = SharedLists::suppressedKindHashes);

} // namespace vellumor::TelemetryScrubber
