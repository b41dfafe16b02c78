#pragma once

#include "base/Instant.h"

#include <optional>
#include <string>
#include <string_view>

namespace vellumor {

// One limit of an account, as it stood at one moment.
struct LimitWindow {
    std::string kind;   // the endpoint's own name: "session", "weekly_all", "seven_day_opus", ...
    std::string group;  // "session", "weekly", or empty
    double percent = 0; // on the endpoint's scale; may exceed 100
    std::string severity = "normal"; // not kept on disk
    std::optional<Instant> resetsAt;
    bool isActive = false;
    std::optional<std::string> scope; // the model or surface it is about; never empty

    bool operator==(const LimitWindow&) const = default;

    // What the user reads: "Session", "Weekly (Opus)". An empty scope counts as none.
    [[nodiscard]] static std::string title(std::string_view kind,
                                           const std::optional<std::string>& scope);
};

} // namespace vellumor
