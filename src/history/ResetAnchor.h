#pragma once

#include "base/Instant.h"
#include "usage/model/LimitWindow.h"

#include <map>
#include <optional>
#include <string>

namespace vellumor {

// The last reset time that the endpoint reported for a weekly window. The endpoint leaves the time
// out while a window is idle; from the anchor it can be told all the same, in steps of seven days.
struct ResetAnchor {
    Instant resetsAt{};
    bool offCadence = false; // that report broke the steps, so they are not to be trusted

    bool operator==(const ResetAnchor&) const = default;
};

using AnchorsByKind = std::map<std::string, ResetAnchor>;  // window kind to anchor
using ResetAnchors = std::map<std::string, AnchorsByKind>; // config directory to anchors

// The anchor's first cadence point strictly after `now`; nothing when it is off cadence or its
// window has no cadence.
[[nodiscard]] std::optional<Instant> nextReset(const ResetAnchor& anchor, const std::string& kind,
                                               const std::string& group, Instant now);

// When a window that reports no reset time will reset; nothing when it reports one, has no anchor,
// or its anchor tells nothing.
[[nodiscard]] std::optional<Instant> estimatedReset(const LimitWindow& window,
                                                    const AnchorsByKind& anchors, Instant now);

} // namespace vellumor
