#pragma once

#include "notifications/WindowAnchors.h"
#include "store/Preferences.h"

#include <set>
#include <string>
#include <vector>

// CustomThresholds: one level of the user's own for each account, over all of its windows. Pure.
namespace vellumor::CustomThresholds {

struct CustomFire {
    std::string windowKind; // as in the key: of one of several its scope too
    std::string windowTitle;
    double threshold = 0;
    double value = 0; // percent now
    std::string key;  // without the threshold: another number does not tell of this period again

    bool operator==(const CustomFire&) const = default;
};

// The windows that have crossed `threshold` since the reading before, but for those in
// `limitReached`, of which more has been said, and those of which a fixed level says the same.
[[nodiscard]] std::vector<CustomFire> customFired(const std::string& accountId,
                                                  const std::vector<WindowStep>& steps,
                                                  double threshold, const Preferences& preferences,
                                                  const std::set<std::string>& alreadyFired,
                                                  const std::set<std::string>& limitReached);

// "Work · Weekly usage crossed 72.5% (now 80%)".
[[nodiscard]] std::string body(const CustomFire& fire, const std::string& accountName);

} // namespace vellumor::CustomThresholds
