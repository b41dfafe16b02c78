#pragma once

#include "usage/model/Usage.h"

#include <compare>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

// WindowAnchors: the reset time in force for each window of an account, and when it has passed.
// Pure. In memory only; what history/ResetAnchor.h learns for good is something else.
namespace vellumor {

// What a window of an account is known by from its first reading on: its kind alone, so that its
// scope may be called otherwise, or its scope too if there were others of its kind.
struct WindowName {
    std::string kind;
    std::optional<std::string> scope = {}; // "" of a window that has none

    auto operator<=>(const WindowName&) const = default;
    // As in the keys: "session", "weekly_scoped/Opus".
    [[nodiscard]] std::string text() const { return scope ? kind + "/" + *scope : kind; }
};

// A window as it was seen last; it may have gone from the readings.
struct WindowAnchor {
    Instant resetsAt{};
    std::string group;
    double percent = 0; // that counts as the one before in this period
    std::optional<std::string> scope = {};

    bool operator==(const WindowAnchor&) const = default;
};
using WindowAnchors = std::map<WindowName, WindowAnchor>;

// One window that has been reset.
struct Rollover {
    WindowName window;
    std::string title;
    std::string key;
    Instant boundary{};   // the reset that has passed
    bool isStale = false; // it passed too long ago to be news

    bool operator==(const Rollover&) const = default;
};

// A window of a reading beside what it was before.
struct WindowStep {
    LimitWindow window;
    std::string name; // as in the keys
    double prior = 0; // percent in the same period; 0 in a new one

    bool operator==(const WindowStep&) const = default;
};

struct CanonicalUsage {
    Usage usage;
    std::vector<WindowStep> steps; // one a window, in their order

    bool operator==(const CanonicalUsage&) const = default;
};

// Two reset times this many seconds apart, or fewer, are one: the endpoint's move a little between
// calls.
inline constexpr double resetTolerance = 300.0;
[[nodiscard]] bool isSameReset(Instant a, Instant b);

// In the order of the kinds. `grace`: for how many seconds a reset is news.
[[nodiscard]] std::vector<Rollover> rollovers(const std::string& accountId, const Usage& usage,
                                              const WindowAnchors& anchors, Instant now,
                                              double grace,
                                              const std::set<std::string>& alreadyFired);

// After `rollover`: moves the anchor to its first cadence point after `now`; a session, which has
// no cadence, loses it.
void retire(const Rollover& rollover, WindowAnchors& anchors, Instant now);

// The anchor's time if the two are the same reset, else the reported one.
[[nodiscard]] Instant canonicalReset(Instant reported, const WindowAnchor* anchor);

// `usage` with each reset time made canonical; the anchors take the windows over. Of two windows of
// one kind and scope the second is left out. One that is known by its scope only seeds the
// comparison at first: that it comes now does not mean that it has been used since.
[[nodiscard]] CanonicalUsage canonicalized(Usage usage, WindowAnchors& anchors);

// The percent that `known` had in the period that ends at `resetsAt`; 0 when it is of another one,
// or a null pointer.
[[nodiscard]] double sameWindowPercent(const WindowAnchor* known, Instant resetsAt);

} // namespace vellumor
