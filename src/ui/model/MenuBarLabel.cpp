#include "ui/model/MenuBarLabel.h"

#include "base/Format.h"

#include <algorithm>

namespace vellumor::MenuBarLabel {

namespace {

using State = AccountRenderState;

constexpr double narrowWidth = 3.0;
constexpr double wideWidth = 5.0;
constexpr double slotGap = 3.0;
constexpr double narrowGroupGap = 3.0;
constexpr double wideGroupGap = 7.0; // so that the two bars of an account read as one

struct Seconds {
    bool ofPercents; // a second slot for the other limits
    bool ofUnknown;  // a second slot where nothing is known
};

Group unknownGroup(Fill fill, bool dimmed, Seconds seconds)
{
    Group group{{fill, dimmed, false}};
    if (seconds.ofUnknown)
        group.push_back({fill, dimmed, true});
    return group;
}

Group groupOf(const AccountRender& render, Seconds seconds)
{
    switch (render.state) {
    case State::loading:
        return unknownGroup(Ellipsis{}, false, seconds);
    case State::noData:
    case State::noToken:
    case State::expired:
        return unknownGroup(Dash{}, true, seconds);
    case State::blocked:
        return unknownGroup(Dash{}, false, seconds);
    case State::ok:
    case State::stale:
        break;
    }
    const bool dimmed = render.state == State::stale;
    Group group{{render.sessionPercent, dimmed, false}};
    if (seconds.ofPercents && render.worstNonSessionPercent)
        group.push_back({*render.worstNonSessionPercent, dimmed, true});
    return group;
}

double groupGap(const std::vector<Group>& groups)
{
    const bool hasPairs =
        std::ranges::any_of(groups, [](const Group& group) { return group.size() >= 2; });
    return groups.size() >= 2 && hasPairs ? wideGroupGap : narrowGroupGap;
}

std::string percentsText(const AccountRender& render, bool showSecond)
{
    std::string text = render.name + " " + Format::wholeText(render.sessionPercent) + "%";
    if (showSecond && render.worstNonSessionPercent) {
        text += ", " + render.worstNonSessionTitle.value_or("weekly") + " " +
                Format::wholeText(*render.worstNonSessionPercent) + "%";
    }
    return text;
}

std::string textOf(const AccountRender& render, bool showSecond)
{
    switch (render.state) {
    case State::ok:
        return percentsText(render, showSecond);
    case State::stale:
        return percentsText(render, showSecond) + ", showing last update";
    case State::loading:
        return render.name + " loading";
    case State::noData:
        return render.name + " no data";
    case State::noToken:
        return render.name + " sign-in needed";
    case State::expired:
        return render.name + " sign-in expired";
    case State::blocked:
        return render.name + " blocked";
    }
    return render.name;
}

const AccountUsageState* find(const std::map<std::string, AccountUsageState>& states,
                              const std::string& id)
{
    const auto found = states.find(id);
    return found == states.end() ? nullptr : &found->second;
}

} // namespace

MenuBarDisplayChoice displayChoice(MenuBarMode mode, bool dualBars)
{
    if (mode == MenuBarMode::bars)
        return dualBars ? MenuBarDisplayChoice::dualBars : MenuBarDisplayChoice::sessionBars;
    return dualBars ? MenuBarDisplayChoice::dualNumbers : MenuBarDisplayChoice::sessionNumbers;
}

MenuBarMode modeOf(MenuBarDisplayChoice choice)
{
    const bool hasBars =
        choice == MenuBarDisplayChoice::sessionBars || choice == MenuBarDisplayChoice::dualBars;
    return hasBars ? MenuBarMode::bars : MenuBarMode::numbers;
}

bool isDual(MenuBarDisplayChoice choice)
{
    return choice == MenuBarDisplayChoice::dualBars || choice == MenuBarDisplayChoice::dualNumbers;
}

std::vector<AccountRender> renders(const std::vector<Account>& pinned,
                                   const std::map<std::string, AccountUsageState>& states,
                                   double effectiveInterval, Instant now)
{
    std::vector<AccountRender> all;
    all.reserve(pinned.size());
    for (const Account& account : pinned)
        all.push_back(AccountRender::of(account, find(states, account.id), effectiveInterval, now));
    return all;
}

std::vector<Group> groups(const std::vector<AccountRender>& renders, MenuBarMode mode,
                          bool dualBars)
{
    const bool hasBars = mode == MenuBarMode::bars;
    const Seconds seconds{dualBars || (hasBars && renders.size() == 1), dualBars && hasBars};
    std::vector<Group> all;
    all.reserve(renders.size());
    for (const AccountRender& render : renders)
        all.push_back(groupOf(render, seconds));
    return all;
}

BarsGeometry barsGeometry(const std::vector<Group>& groups)
{
    const double gap = groupGap(groups);
    BarsGeometry geometry;
    double x = 0;
    for (std::size_t g = 0; g < groups.size(); ++g) {
        if (g > 0)
            x += gap; // also around a group without slots
        for (std::size_t s = 0; s < groups[g].size(); ++s) {
            if (s > 0)
                x += slotGap;
            const double width = groups[g][s].wide ? wideWidth : narrowWidth;
            geometry.placed.push_back({groups[g][s], x, width});
            x += width;
        }
    }
    geometry.total = x;
    return geometry;
}

std::string numberString(const Slot& slot)
{
    if (const double* percent = std::get_if<double>(&slot.fill))
        return Format::wholeText(*percent);
    return std::holds_alternative<Dash>(slot.fill) ? "–" : "…";
}

std::string accessibilityDescription(const std::vector<AccountRender>& renders, MenuBarMode mode,
                                     bool dual)
{
    if (renders.empty())
        return "Vellumor: no accounts pinned";
    const bool showSecond = dual || (mode == MenuBarMode::bars && renders.size() == 1);
    std::string text;
    for (const AccountRender& render : renders)
        text += (text.empty() ? "" : ", ") + textOf(render, showSecond);
    return text;
}

std::optional<Instant> nextStaleness(const std::vector<Account>& pinned,
                                     const std::map<std::string, AccountUsageState>& states,
                                     double effectiveInterval, Instant now)
{
    std::optional<Instant> next;
    for (const Account& account : pinned) {
        const AccountUsageState* state = find(states, account.id);
        const bool isBlocked = state != nullptr && state->lastError &&
                               state->lastError->kind == UsageFetchError::Kind::forbidden;
        if (state == nullptr || isBlocked)
            continue; // no reading of it is drawn
        const auto change = state->nextStaleChange(effectiveInterval, now);
        if (change && (!next || *change < *next))
            next = change;
    }
    return next;
}

} // namespace vellumor::MenuBarLabel
