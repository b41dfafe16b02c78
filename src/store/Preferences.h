#pragma once

#include <map>
#include <optional>
#include <string>

namespace vellumor {

enum class MenuBarMode { bars, numbers };

// The user's settings. The names of the fields are the keys of preferences.json; a key that is
// missing there takes the default given here.
struct Preferences {
    int schemaVersion = 1;
    MenuBarMode menuBarMode = MenuBarMode::bars;
    bool menuBarDualBars = false;
    double userInterval = 120.0; // seconds, 60 to 1800
    bool localCacheOnly = false;
    bool tokenRevivalEnabled = true;
    std::string claudeBinaryPath; // empty: find it
    bool notificationsEnabled = false;
    bool notifySession50 = false;
    bool notifySession90 = true;
    bool notifyWeekly50 = false;
    bool notifyWeekly90 = true;
    bool notifySessionLimit = true;
    bool notifyWeeklyLimit = true;
    bool notifyQuotaReset = false;
    bool notifyProjectedWeekly = false;
    bool notifyProjectedSession = false;
    bool notifyCreditBurn = true;
    bool notifySessionClosing = false;
    int sessionClosingLeadMinutes = 30;             // 5 to 120
    std::map<std::string, double> customThresholds; // percent, 1 to 99, by Account.id
    bool crossPromoDismissed = false;

    bool operator==(const Preferences&) const = default;

    // A copy with every bounded field held to its bounds, ends included.
    [[nodiscard]] Preferences clamped() const;

    // The extra threshold of an account within its bounds, or nothing when it has none.
    [[nodiscard]] std::optional<double> customThreshold(const std::string& accountId) const;

    // Nothing when a value has a wrong type, or the version is newer than 1.
    [[nodiscard]] static std::optional<Preferences> decode(std::string_view bytes);
    // The text of the file; nothing when a text in it is not valid UTF-8.
    [[nodiscard]] std::optional<std::string> encode() const;
};

} // namespace vellumor
