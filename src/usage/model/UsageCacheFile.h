#pragma once

#include "base/JsonForward.h"
#include "usage/model/Usage.h"

#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace vellumor {

// A reading on disk, in the form that the sibling application reads and writes too. Severity is
// left behind.
struct UsageCacheFile {
    struct CachedWindow {
        std::string kind;
        std::string group;
        double percent = 0;
        std::optional<Instant> resetsAt;
        bool isActive = false;
        std::optional<std::string> scope;
        bool operator==(const CachedWindow&) const = default;
    };

    int schemaVersion = 2;
    Instant fetchedAt{};
    std::vector<CachedWindow> windows;
    std::optional<ExtraUsage> extraUsage;
    std::optional<Instant>
        backoffUntil; // until when the writer does not call the endpoint for this account
    std::optional<std::string> source;
    std::optional<std::string> sourceVersion;

    bool operator==(const UsageCacheFile&) const = default;

    // What this program writes of a reading.
    [[nodiscard]] static UsageCacheFile of(const Usage& usage, std::optional<Instant> backoffUntil);

    // The reading that it restores, without rows of a kind in `suppressed`: a sibling may have
    // written one.
    [[nodiscard]] Usage
    usage(SuppressedKinds::Digests suppressed = SharedLists::suppressedKindHashes) const;

    // Why bytes are no such file.
    struct DecodeError {
        std::string description;
    };

    // Strict: a missing required key, a wrong type or a bad date makes the whole file an error. Any
    // version decodes; the reader judges it.
    [[nodiscard]] static std::variant<UsageCacheFile, DecodeError> decode(const Json& json);
    [[nodiscard]] static std::variant<UsageCacheFile, DecodeError> decode(std::string_view bytes);

    [[nodiscard]] Json encode() const;
};

} // namespace vellumor
