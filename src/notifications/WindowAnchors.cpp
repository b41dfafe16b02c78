#include "notifications/WindowAnchors.h"

#include "history/Projection.h"
#include "notifications/AlertKey.h"

#include <algorithm>
#include <cmath>

namespace vellumor {

namespace {

using KindAndScope = std::pair<std::string_view, std::string_view>;

KindAndScope kindAndScope(std::string_view kind, const std::optional<std::string>& scope)
{
    return {kind, scope ? std::string_view(*scope) : std::string_view()};
}

// The kinds of which there are several windows, or were.
std::set<std::string_view> severalKinds(const std::vector<LimitWindow>& windows,
                                        const WindowAnchors& anchors)
{
    std::set<std::string_view> kinds;
    std::set<KindAndScope> windowsSeen;
    std::set<std::string_view> several;
    for (const LimitWindow& window : windows) {
        if (windowsSeen.insert(kindAndScope(window.kind, window.scope)).second &&
            !kinds.insert(window.kind).second)
            several.insert(window.kind);
    }
    for (const auto& [name, anchor] : anchors) {
        if (name.scope)
            several.insert(name.kind);
    }
    return several;
}

// What each of `windows` is known by, in their order.
std::vector<WindowName> namesOf(const std::vector<LimitWindow>& windows,
                                const WindowAnchors& anchors)
{
    std::map<KindAndScope, const WindowName*> known;
    for (const auto& [name, anchor] : anchors)
        known.emplace(kindAndScope(name.kind, anchor.scope), &name);
    const auto several = severalKinds(windows, anchors);
    std::vector<WindowName> names;
    for (const LimitWindow& window : windows) {
        const auto found = known.find(kindAndScope(window.kind, window.scope));
        if (found != known.end())
            names.push_back(*found->second);
        else if (several.contains(window.kind))
            names.push_back({window.kind, window.scope.value_or("")});
        else
            names.push_back({window.kind});
    }
    return names;
}

// Makes the step's reset time canonical, and finds what the percent was before.
void take(WindowStep& step, const WindowName& name, const WindowAnchors& before,
          WindowAnchors& anchors)
{
    LimitWindow& reported = step.window;
    if (!reported.resetsAt)
        return;
    const auto found = before.find(name);
    const WindowAnchor* known = found == before.end() ? nullptr : &found->second;
    reported.resetsAt = canonicalReset(*reported.resetsAt, known);
    const bool onlySeeds = known == nullptr && name.scope;
    step.prior = onlySeeds ? reported.percent : sameWindowPercent(known, *reported.resetsAt);
    anchors.insert_or_assign(
        name, WindowAnchor{*reported.resetsAt, reported.group, reported.percent, reported.scope});
}

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

std::vector<Rollover> rollovers(const std::string& accountId, const Usage& usage,
                                const WindowAnchors& anchors, Instant now, double grace,
                                const std::set<std::string>& alreadyFired)
{
    const auto names = namesOf(usage.windows, anchors);
    std::map<WindowName, const LimitWindow*> reported;
    for (std::size_t i = 0; i < names.size(); ++i)
        reported.emplace(names[i], &usage.windows[i]);
    std::vector<Rollover> found;
    for (const auto& [name, anchor] : anchors) {
        const auto at = reported.find(name);
        const LimitWindow* window = at == reported.end() ? nullptr : at->second;
        std::string key = AlertKey::of({accountId, "reset", name.text()}, anchor.resetsAt);
        if (!hasRolledOver(window, anchor, now) || alreadyFired.contains(key))
            continue;
        found.push_back(
            {name, LimitWindow::title(name.kind, window != nullptr ? window->scope : name.scope),
             std::move(key), anchor.resetsAt, secondsBetween(anchor.resetsAt, now) > grace});
    }
    return found;
}

void retire(const Rollover& rollover, WindowAnchors& anchors, Instant now)
{
    const auto found = anchors.find(rollover.window);
    if (found == anchors.end())
        return;
    WindowAnchor& anchor = found->second;
    const std::string& kind = found->first.kind;
    const auto length = Projection::windowLength(kind, anchor.group);
    if (kind == "session" || anchor.group == "session" || !length) {
        anchors.erase(found);
        return;
    }
    const double periods = std::floor(secondsBetween(anchor.resetsAt, now) / *length) + 1;
    anchor.resetsAt += std::chrono::seconds(std::llround(*length * periods));
    anchor.percent = 0;
}

Instant canonicalReset(Instant reported, const WindowAnchor* anchor)
{
    return anchor != nullptr && isSameReset(reported, anchor->resetsAt) ? anchor->resetsAt
                                                                        : reported;
}

double sameWindowPercent(const WindowAnchor* known, Instant resetsAt)
{
    return known != nullptr && isSameReset(known->resetsAt, resetsAt) ? known->percent : 0.0;
}

CanonicalUsage canonicalized(Usage usage, WindowAnchors& anchors)
{
    const auto names = namesOf(usage.windows, anchors);
    const WindowAnchors before = anchors;
    for (auto& [name, anchor] : anchors) {
        if (!name.scope)
            anchor.percent = 0; // known by its kind alone, one that comes back crosses from zero
    }
    std::set<WindowName> seen;
    CanonicalUsage canonical;
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (!seen.insert(names[i]).second)
            continue;
        WindowStep step{std::move(usage.windows[i]), names[i].text(), 0};
        take(step, names[i], before, anchors);
        canonical.steps.push_back(std::move(step));
    }
    usage.windows.clear();
    for (const WindowStep& step : canonical.steps)
        usage.windows.push_back(step.window);
    canonical.usage = std::move(usage);
    return canonical;
}

} // namespace vellumor
