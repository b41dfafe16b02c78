#pragma once

#include "base/Instant.h"
#include "store/FileStore.h"

#include <optional>
#include <string>
#include <vector>

namespace vellumor {

// One 429, with what is needed to judge later whether the cadence is too tight.
struct RateLimitEntry {
    Instant at{};
    std::string configDir;
    std::string trigger; // "manual", "auto" or "revival"
    std::optional<double>
        sinceLastRequestSeconds; // since the request before, of any account; may be negative
    std::optional<std::string> lastRequestConfigDir;
    double effectiveIntervalSeconds = 0;
    double backoffSeconds = 0;
    std::optional<double> retryAfterSeconds;
    bool operator==(const RateLimitEntry&) const = default;

    // One line of JSON without its line feed; nothing when it cannot be written as JSON.
    [[nodiscard]] std::optional<std::string> encode() const;
};

// The last 500 entries, one JSON object a line, oldest first. One caller at a time, which Serial<>
// sees to. Nothing here reports an error: it is a diagnostic, and must not disturb a fetch.
class RateLimitLog {
public:
    static constexpr int maxEntries = 500;

    // Makes the file's folder. `files` outlives the log.
    RateLimitLog(const FileStore& files, std::string fileURL);

    void record(const RateLimitEntry& entry);
    // The last `n` lines, fewer if there are fewer. `n` is not negative.
    [[nodiscard]] std::vector<std::string> recent(int n) const;

    // The same of a file that may not be there, creating nothing.
    [[nodiscard]] static std::vector<std::string> recentIn(const std::string& fileURL, int n);
    // `existing` with one line more, cut from the front to `cap` lines.
    [[nodiscard]] static std::vector<std::string> trimmed(std::vector<std::string> existing,
                                                          std::string adding, int cap);

private:
    const FileStore& m_files;
    std::string m_fileURL;
};

} // namespace vellumor
