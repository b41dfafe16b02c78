#include "notifications/WindowAnchors.h"

#include "history/Projection.h"
#include "notifications/AlertKey.h"

#include <algorithm>
#include <cmath>

namespace vellumor {

namespace {

bool hasRolledOver(const LimitWindow* window, const WindowAnchor& anchor, Instant now)
{
    if (window != nullptr && window->resetsAt)
        return secondsBetween(anchor.resetsAt, *window->resetsAt) > resetTolerance;
    return now >= anchor.resetsAt;
}

} // namespace

bool isSameReset(Instant a, Instant b)
{
    return std::abs(secondsBetween(a, b)) <= resetTolerance;
}

const LimitWindow* windowOf(const Usage& usage, std::string_view kind)
{
    const auto found = std::ranges::find(usage.windows, kind, &LimitWindow::kind);
    return found == usage.windows.end() ? nullptr : &*found;
}

std::vector<Rollover> rollovers(const std::string& accountId, const Usage& usage,
                                const WindowAnchors& anchors, Instant now, double grace,
                                const std::set<std::string>& alreadyFired)
{
    std::vector<Rollover> found;
    for (const auto& [kind, anchor] : anchors) {
        const LimitWindow* window = windowOf(usage, kind);
        std::string key = AlertKey::of({accountId, "reset", kind}, anchor.resetsAt);
        if (!hasRolledOver(window, anchor, now) || alreadyFired.contains(key))
            continue;
        found.push_back(
            {kind, LimitWindow::title(kind, window != nullptr ? window->scope : std::nullopt),
             std::move(key), anchor.resetsAt, secondsBetween(anchor.resetsAt, now) > grace});
    }
    return found;
}

void retire(const Rollover& rollover, WindowAnchors& anchors, Instant now)
{
    const auto found = anchors.find(rollover.windowKind);
    if (found == anchors.end())
        return;
    WindowAnchor& anchor = found->second;
    const auto length = Projection::windowLength(found->first, anchor.group);
    if (found->first == "session" || anchor.group == "session" || !length) {
        anchors.erase(found);
        return;
    }
    const double periods = std::floor(secondsBetween(anchor.resetsAt, now) / *length) + 1;
    anchor.resetsAt += std::chrono::seconds(std::llround(*length * periods));
}

Instant canonicalReset(Instant reported, const WindowAnchor* anchor)
{
    return anchor != nullptr && isSameReset(reported, anchor->resetsAt) ? anchor->resetsAt
                                                                        : reported;
}

Usage canonicalized(Usage usage, WindowAnchors& anchors)
{
    for (LimitWindow& window : usage.windows) {
        if (!window.resetsAt)
            continue;
        const auto known = anchors.find(window.kind);
        window.resetsAt =
            canonicalReset(*window.resetsAt, known == anchors.end() ? nullptr : &known->second);
        anchors.insert_or_assign(window.kind, WindowAnchor{*window.resetsAt, window.group});
    }
    return usage;
}

double sameWindowPercent(const LimitWindow* previous, std::string_view kind, Instant resetsAt)
{
    if (previous == nullptr || previous->kind != kind || !previous->resetsAt ||
        !isSameReset(*previous->resetsAt, resetsAt))
        return 0.0;
    return previous->percent;
}

} // namespace vellumor
