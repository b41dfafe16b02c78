#pragma once

#include "diagnostics/crash/CrashDigest.h"
#include "store/FileStore.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vellumor {

// Which crashes were dealt with, and when one of each kind was told of last: crash-state.json. Has
// no other writer.
struct CrashReportState {
    static constexpr std::size_t maxIncidents = 200;

    std::vector<std::string> consumedIncidents;         // the oldest first
    std::map<std::string, std::string> lastReportedDay; // signature to UTC day
    bool operator==(const CrashReportState&) const = default;

    // Strict: nothing when a key is missing or of a wrong type.
    [[nodiscard]] static std::optional<CrashReportState> decode(std::string_view bytes);
    // Nothing when a text in it is not UTF-8.
    [[nodiscard]] std::optional<std::string> encode() const;

    // A file that is missing or unusable is an empty state.
    [[nodiscard]] static CrashReportState load(const std::string& fileURL);
    // Creates its folder. A failure is not told: it costs one event told twice.
    void save(const FileStore& files, const std::string& fileURL) const;

    // Where the state lies below the folder of the program's own files.
    [[nodiscard]] static std::string fileURL(const std::string& vellumorFolder);

    [[nodiscard]] bool isConsumed(const CrashDigest& digest) const;
    enum class Sent { no, yes };
    void record(const CrashDigest& digest, const std::string& today, Sent sent);
};

} // namespace vellumor
