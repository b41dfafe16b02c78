#pragma once

#include "base/Instant.h"
#include "telemetry/TelemetryCaps.h"
#include "telemetry/TelemetryCounters.h"

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vellumor {

// Everything that telemetry knows: who this installation is, without telling who uses it, what the
// user allows, and what was counted. Holds no path, no mail address, no token.
struct TelemetryConfig {
    static constexpr int currentVersion = 2;

    int schemaVersion = currentVersion;
    std::string installID; // "inst_" and 32 hexadecimal digits, at random
    bool diagnosticsEnabled = true;
    bool productAnalyticsEnabled = true;
    Instant installedAt{};
    std::string lastEmittedDay; // UTC day of the last daily event; "": none yet
    Instant countersSince{};    // when the present period of counting began
    TelemetryCounters counters;
    std::vector<std::string> failureCategories;       // each once
    std::map<std::string, int, std::less<>> servedBy; // readings by the layer that they came from
    TelemetryCaps caps;
    bool multiAccountReached = false; // the event about it has been sent

    bool operator==(const TelemetryConfig&) const = default;

    // That of an installation that begins now.
    [[nodiscard]] static TelemetryConfig fresh(Instant now);

    // Nothing when the bytes are broken, of a newer version, or name nobody. `now` stands for a
    // date that is missing; a date beyond the years 1 to 9999 counts as the end of that range, a
    // negative count as none.
    [[nodiscard]] static std::optional<TelemetryConfig> decode(std::string_view bytes, Instant now);
    [[nodiscard]] std::optional<std::string> encode() const;

    // Counts from now on, with the daily event of `today` behind it.
    void startPeriod(Instant now, std::string today);
    void noteFailureCategory(const std::string& category);
};

} // namespace vellumor
