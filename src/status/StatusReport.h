#pragma once

#include "base/Instant.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vellumor {

// One limit of an account. An empty text is one that is not shown.
struct StatusWindow {
    std::string kind;        // the endpoint's own name: "session", "weekly_all", ...
    std::string title;       // "Weekly (Opus)"
    double percent = 0;      // as the endpoint gave it; may exceed 100
    std::string percentText; // "62%"
    std::optional<Instant> resetsAt;
    std::string resetText; // "2h 14m", "not started"; may be an estimate where resetsAt is none
    bool isActive = false;
    std::string scope;
    bool isStale = false; // the reading is too old, or from the future

    bool operator==(const StatusWindow&) const = default;
};

// One account, as the popover shows it.
struct StatusAccount {
    std::string id;
    std::string name;  // as the user calls it
    std::string state; // "ok", "stale", "loading", "noData", "noToken", "expired", "blocked"
    std::vector<StatusWindow> windows;
    std::string credits;
    bool areCreditsExhausted = false;
    std::string forecast;             // with its arrow
    std::optional<Instant> updatedAt; // the age of the reading
    std::vector<std::string> notes;   // why there are no numbers, or not the latest

    bool operator==(const StatusAccount&) const = default;

    // The fullest limit; of equal ones the first. Null pointer without one.
    [[nodiscard]] const StatusWindow* fullest() const;
    // The first of this kind; null pointer without one.
    [[nodiscard]] const StatusWindow* window(std::string_view kind) const;
};

// Where a report comes from: the program that runs, or what it has left in its files.
enum class StatusOrigin { program, files };

// What the popover tells of the tracked accounts, in their order, for those who do not see it:
// bars, shells and scripts. It names an account as the popover does: as the user has, else by its
// mail address, organisation or folder.
struct StatusReport {
    static constexpr int schemaVersion = 1; // of every form that has names in it

    std::vector<StatusAccount> accounts;
    std::optional<Instant> updatedAt; // of what is shown as a whole

    bool operator==(const StatusReport&) const = default;

    // The same without the texts that change while nothing happens but time.
    [[nodiscard]] StatusReport timeless() const;
    // Those accounts alone whose name or id this is.
    [[nodiscard]] StatusReport only(std::string_view nameOrId) const;
};

} // namespace vellumor
