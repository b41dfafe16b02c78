#pragma once

#include "notifications/WindowAnchors.h"
#include "store/Preferences.h"

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace vellumor {

// A level at which the user is told of a window.
enum class Threshold { session50, session90, weekly50, weekly90, sessionLimit, weeklyLimit };

[[nodiscard]] std::string_view name(Threshold threshold); // as in the keys: "session50"
[[nodiscard]] double level(Threshold threshold);          // percent
[[nodiscard]] bool isOn(Threshold threshold, const Preferences& preferences);

// Thresholds: which levels a reading has crossed. Pure.
namespace Thresholds {

// One level that was crossed.
struct Fire {
    Threshold threshold;
    std::string windowKind; // as in the key: of one of several its scope too
    std::string windowTitle;
    double value = 0; // percent now
    std::optional<Instant> resetsAt;
    std::string key;

    bool operator==(const Fire&) const = default;
};

// The levels that lay above the reading before and do not any more, each once for a period of its
// window.
[[nodiscard]] std::vector<Fire> newlyFired(const std::string& accountId,
                                           const std::vector<WindowStep>& steps,
                                           const Preferences& preferences,
                                           const std::set<std::string>& alreadyFired);

// The keys of those that a higher level of the same window says already.
[[nodiscard]] std::set<std::string> subsumedKeys(const std::vector<Fire>& fires);

// "Work · Session usage crossed 90% (now 93%)".
[[nodiscard]] std::string body(const Fire& fire, const std::string& accountName, Instant now);

} // namespace Thresholds

} // namespace vellumor
