#pragma once

#include "history/Projection.h"

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

// ProjectedAlerts: when a forecast is worth a warning. Forecasts are noisy: one must hold for two
// readings, promise a real loss of time, and is told once for a period of its window. Pure.
namespace vellumor {

// For how long a window has been forecast to fill.
struct EtaHold {
    std::string windowKind;
    std::string key;          // of the window's period
    int count = 0;            // of readings in a row
    bool wasEligible = false; // it has been worth a warning once

    bool operator==(const EtaHold&) const = default;
};
using EtaHolds = std::map<std::string, EtaHold>; // by window kind

struct ProjectedFire {
    std::string windowKind;
    std::string windowTitle;
    Instant wall{}; // when the limit will be hit
    std::string key;

    bool operator==(const ProjectedFire&) const = default;
};

struct ProjectedOutcome {
    EtaHolds holds; // takes the place of those before, whole
    std::optional<ProjectedFire> fire;
    std::vector<std::string> consumedKeys; // never to be told any more
    std::optional<Instant> firedAt;

    bool operator==(const ProjectedOutcome&) const = default;
};

// What one reading of one account does to its forecasts.
struct ProjectedInput {
    const std::string& accountId;
    const EtaHolds& previous;
    const std::vector<Projection::Candidate>& candidates;
    const std::vector<LimitWindow>& windows;
    bool deliverWeekly = false;
    bool deliverSession = false;
    std::optional<Instant> lastFired; // of any window of the account
    Instant now{};
    const std::set<std::string>& alreadyFired;
};

[[nodiscard]] ProjectedOutcome advanceProjected(const ProjectedInput& input);

} // namespace vellumor
