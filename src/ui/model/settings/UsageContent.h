#pragma once

#include "app/state/AppState.h"

#include <array>
#include <string>
#include <vector>

namespace vellumor {

// What the settings say about how usage is refreshed.
struct UsageContent {
    struct IntervalChoice {
        double seconds = 0;
        std::string text;
        bool operator==(const IntervalChoice&) const = default;
    };

    std::vector<IntervalChoice> intervals; // ascending, the stored one among them
    std::size_t interval = 0;              // which of them is stored
    std::string designedNote;
    std::string effectiveNote;
    bool localCacheOnly = false;
    bool tokenRevivalEnabled = false;
    std::string claudeLocation; // "automatic", or the path
    bool hasClaudePath = false;

    bool operator==(const UsageContent&) const = default;

    static constexpr std::array intervalPresets = {60.0, 120.0, 300.0, 600.0, 900.0, 1800.0};
    static constexpr const char* localCacheOnlyHelp =
        "Stops all of Vellumor's usage requests. Data will be updated from Claude Code's own local "
        "cache only.";

    [[nodiscard]] static UsageContent of(const AppState& state);
    // Seconds, for people: "~5 minutes", "~1 min 30s".
    [[nodiscard]] static std::string spelledInterval(double seconds);
    // How often `pollable` accounts are refreshed, of `tracked` ones.
    [[nodiscard]] static std::string effective(std::size_t pollable, std::size_t tracked,
                                               double effectiveInterval);
};

} // namespace vellumor
