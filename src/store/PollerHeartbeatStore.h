#pragma once

#include "base/Instant.h"
#include "store/FileStore.h"

#include <optional>
#include <string>
#include <string_view>

namespace vellumor {

// One program's claim that it is polling.
struct PollerHeartbeat {
    int schemaVersion = 1;
    std::string source; // "vellumor" for this program
    double intervalSeconds = 0;
    Instant updatedAt{};
    std::optional<int> pid;
    bool operator==(const PollerHeartbeat&) const = default;

    // Nothing when the bytes are no claim. The date may be a text, or a number of seconds since
    // 2001-01-01 00:00:00 UTC.
    [[nodiscard]] static std::optional<PollerHeartbeat> decode(std::string_view bytes);
    // Nothing when the interval is no finite number.
    [[nodiscard]] std::optional<std::string> encode() const;
};

// The file in the shared folder in which the applications of the toolkit tell one another that they
// poll. It holds one claim; the last writer wins. Every failure means that nobody else is there.
class PollerHeartbeatStore {
public:
    // Makes the file's folder. `files` outlives the store.
    PollerHeartbeatStore(const FileStore& files, std::string fileURL);

    // True when the claim was written.
    bool claim(double intervalSeconds, Instant now);
    // For how many seconds the readings of another program that polls count as fresh; nothing when
    // none does.
    [[nodiscard]] std::optional<double> foreignCoverageWindow(Instant now) const;

private:
    const FileStore& m_files;
    std::string m_fileURL;
};

} // namespace vellumor
