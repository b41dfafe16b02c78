#pragma once

#include "store/Preferences.h"
#include "ui/model/AccountRender.h"

#include <map>
#include <string>
#include <variant>
#include <vector>

// MenuBarLabel: what stands in the panel, from accounts to places. Pure; the drawing is in
// ui/LabelPainter.h. Lengths are in points.
namespace vellumor::MenuBarLabel {

struct Dash {
    bool operator==(const Dash&) const = default;
};
struct Ellipsis {
    bool operator==(const Ellipsis&) const = default;
};
using Fill = std::variant<double, Dash, Ellipsis>; // double: a percent

// One bar or number.
struct Slot {
    Fill fill;
    bool dimmed = false;
    bool wide = false;
    bool operator==(const Slot&) const = default;
};
using Group = std::vector<Slot>; // of one account

struct Placed {
    Slot slot;
    double x = 0;
    double width = 0;
    bool operator==(const Placed&) const = default;
};
struct BarsGeometry {
    std::vector<Placed> placed;
    double total = 0; // from the left end of the first slot to the right end of the last
    bool operator==(const BarsGeometry&) const = default;
};

inline constexpr double height = 19.0;
inline constexpr double barHeight = 15.0;
inline constexpr double barY = 2.0;
inline constexpr double barRadius = 0.5;

// The four choices of the settings.
enum class MenuBarDisplayChoice { sessionBars, dualBars, sessionNumbers, dualNumbers };
[[nodiscard]] MenuBarDisplayChoice displayChoice(MenuBarMode mode, bool dualBars);
[[nodiscard]] MenuBarMode modeOf(MenuBarDisplayChoice choice);
[[nodiscard]] bool isDual(MenuBarDisplayChoice choice);

// In the order of `pinned`.
[[nodiscard]] std::vector<AccountRender>
renders(const std::vector<Account>& pinned, const std::map<std::string, AccountUsageState>& states,
        double effectiveInterval, Instant now);

// One group a render, in their order.
[[nodiscard]] std::vector<Group> groups(const std::vector<AccountRender>& renders, MenuBarMode mode,
                                        bool dualBars);

[[nodiscard]] BarsGeometry barsGeometry(const std::vector<Group>& groups);

// "–", "…", or the percent as a whole number without its sign.
[[nodiscard]] std::string numberString(const Slot& slot);

// What a screen reader says of the whole label.
[[nodiscard]] std::string accessibilityDescription(const std::vector<AccountRender>& renders,
                                                   MenuBarMode mode, bool dual);

// The next moment after `now` at which one of the readings that are drawn becomes too old, or one
// from the future good again; nothing when none will.
[[nodiscard]] std::optional<Instant>
nextStaleness(const std::vector<Account>& pinned,
              const std::map<std::string, AccountUsageState>& states, double effectiveInterval,
              Instant now);

} // namespace vellumor::MenuBarLabel
