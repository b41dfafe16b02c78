#include "history/ResetAnchor.h"

#include "history/Projection.h"

#include <cmath>

namespace vellumor {

std::optional<Instant> nextReset(const ResetAnchor& anchor, const std::string& kind,
                                 const std::string& group, Instant now)
{
    if (anchor.offCadence || kind == "session" || group == "session")
        return std::nullopt;
    const auto length = Projection::windowLength(kind, group);
    if (!length)
        return std::nullopt;
    const double periods = std::floor(secondsBetween(anchor.resetsAt, now) / *length) + 1;
    return anchor.resetsAt + std::chrono::seconds(std::llround(*length * periods));
}

std::optional<Instant> estimatedReset(const LimitWindow& window, const AnchorsByKind& anchors,
                                      Instant now)
{
    if (window.resetsAt)
        return std::nullopt;
    const auto anchor = anchors.find(window.kind);
    if (anchor == anchors.end())
        return std::nullopt;
    return nextReset(anchor->second, window.kind, window.group, now);
}

} // namespace vellumor
