#pragma once

#include "app/state/AppState.h"

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace vellumor {

// SessionClosingChoice: how long before its end a session may announce it.
namespace SessionClosingChoice {

inline constexpr std::array presets = {15, 30, 60, 90}; // minutes

// The presets and, among them, the stored one; ascending.
[[nodiscard]] std::vector<int> options(int storedMinutes);
[[nodiscard]] std::string text(int minutes); // "30 min"

} // namespace SessionClosingChoice

// What the settings offer to be told about.
struct NotificationsContent {
    using Switch = bool Preferences::*;

    struct ThresholdRow {
        const char* title;
        std::array<Switch, 3> switches; // in the order of thresholdColumns
    };
    struct Event {
        const char* title;
        const char* help; // empty: none
        Switch field;
    };
    struct CustomThreshold {
        std::string id;
        std::string name;
        std::optional<double> percent; // 1 to 99; nothing: off
        bool operator==(const CustomThreshold&) const = default;
    };

    Preferences preferences;
    std::vector<int> leads; // minutes
    std::vector<CustomThreshold> custom;

    bool operator==(const NotificationsContent&) const = default;

    static constexpr std::array thresholdColumns = {"At 50%", "At 90%", "Limit reached"};
    static constexpr std::array thresholdRows = {
        ThresholdRow{"Session",
                     {&Preferences::notifySession50, &Preferences::notifySession90,
                      &Preferences::notifySessionLimit}},
        ThresholdRow{"Weekly",
                     {&Preferences::notifyWeekly50, &Preferences::notifyWeekly90,
                      &Preferences::notifyWeeklyLimit}},
    };
    static constexpr const char* thresholdNote =
        "Weekly covers every weekly window, including model-scoped ones.";
    static constexpr std::array events = {
        Event{"Usage window resets",
              "When a session or weekly window resets and usage returns to zero.",
              &Preferences::notifyQuotaReset},
        Event{"On pace to hit a weekly window limit", "Based on your current burn rate.",
              &Preferences::notifyProjectedWeekly},
        Event{"On pace to hit a session window limit", "Based on your current burn rate.",
              &Preferences::notifyProjectedSession},
        Event{"Spending usage credits", "", &Preferences::notifyCreditBurn},
    };
    static constexpr Event sessionClosing = {"Session window closes soon", "",
                                             &Preferences::notifySessionClosing};
    static constexpr double usualCustomThreshold = 75.0; // where one is switched on

    [[nodiscard]] static NotificationsContent of(const AppState& state);
};

} // namespace vellumor
