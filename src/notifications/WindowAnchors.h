#pragma once

#include "usage/model/Usage.h"

#include <map>
#include <set>
#include <string>
#include <vector>

// WindowAnchors: the reset time in force for each window of an account, and when it has passed.
// Pure. In memory only; what history/ResetAnchor.h learns for good is something else.
namespace vellumor {

struct WindowAnchor {
    Instant resetsAt{};
    std::string group; // of the window, which may have gone from the readings

    bool operator==(const WindowAnchor&) const = default;
};
using WindowAnchors = std::map<std::string, WindowAnchor>; // by window kind

// One window that has been reset.
struct Rollover {
    std::string windowKind;
    std::string title;
    std::string key;
    Instant boundary{};   // the reset that has passed
    bool isStale = false; // it passed too long ago to be news

    bool operator==(const Rollover&) const = default;
};

// Two reset times this many seconds apart, or fewer, are one: the endpoint's move a little between
// calls.
inline constexpr double resetTolerance = 300.0;
[[nodiscard]] bool isSameReset(Instant a, Instant b);

// By window kind. `grace`: for how many seconds a reset is news.
[[nodiscard]] std::vector<Rollover> rollovers(const std::string& accountId, const Usage& usage,
                                              const WindowAnchors& anchors, Instant now,
                                              double grace,
                                              const std::set<std::string>& alreadyFired);

// After `rollover`: moves the anchor to its first cadence point after `now`; a session, which has
// no cadence, loses it.
void retire(const Rollover& rollover, WindowAnchors& anchors, Instant now);

// The anchor's time if the two are the same reset, else the reported one.
[[nodiscard]] Instant canonicalReset(Instant reported, const WindowAnchor* anchor);

// `usage` with each reset time made canonical; the anchors take them over.
[[nodiscard]] Usage canonicalized(Usage usage, WindowAnchors& anchors);

// The percent that `previous` had in the period of `kind` that ends at `resetsAt`; 0 when it is of
// another one, or a null pointer.
[[nodiscard]] double sameWindowPercent(const LimitWindow* previous, std::string_view kind,
                                       Instant resetsAt);

// The first window of that kind; a null pointer without one.
[[nodiscard]] const LimitWindow* windowOf(const Usage& usage, std::string_view kind);

} // namespace vellumor
