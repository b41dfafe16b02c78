#include "ui/model/MenuBarLabel.h"

#include "ui/model/Readings.h"

#include <gtest/gtest.h>

#include <string>

namespace vellumor::menuBarLabelTest {
namespace {

using MenuBarLabel::Group;
using MenuBarLabel::MenuBarDisplayChoice;
using MenuBarLabel::Slot;
using State = AccountRenderState;

// "62", "…", "–", with "d" for a dimmed one and "w" for a wide one.
std::string slotText(const Slot& slot)
{
    return MenuBarLabel::numberString(slot) + (slot.dimmed ? "d" : "") + (slot.wide ? "w" : "");
}

// The slots apart by blanks, the groups by bars.
std::string text(const std::vector<Group>& groups)
{
    std::string all;
    for (std::size_t g = 0; g < groups.size(); ++g) {
        all += g > 0 ? " | " : "";
        for (std::size_t s = 0; s < groups[g].size(); ++s)
            all += (s > 0 ? " " : "") + slotText(groups[g][s]);
    }
    return all;
}

AccountRender render(State state, std::optional<double> second = 41)
{
    AccountRender render;
    render.name = "ada";
    render.state = state;
    render.sessionPercent = 62;
    render.worstNonSessionPercent = second;
    if (second) {
        render.nonSessionPercents = {*second};
        render.worstNonSessionTitle = "Weekly (Opus)";
    }
    return render;
}

// One group a text, one slot a letter: "n" for a narrow one, "w" for a wide one.
std::vector<Group> groupsOf(const std::vector<std::string>& texts)
{
    std::vector<Group> groups;
    for (const std::string& letters : texts) {
        Group group;
        for (const char letter : letters)
            group.push_back({10.0, false, letter == 'w'});
        groups.push_back(group);
    }
    return groups;
}

TEST(MenuBarLabel, theSlotsOfEachStateInEachMode)
{
    const struct {
        const char* name;
        State state;
        std::optional<double> second;
        const char* barsOfOne;
        const char* barsOfSeveral;
        const char* dualBars;
        const char* numbers;
        const char* dualNumbers;
    } rows[] = {
        {"ok", State::ok, 41, "62 41w", "62", "62 41w", "62", "62 41w"},
        {"ok alone", State::ok, std::nullopt, "62", "62", "62", "62", "62"},
        {"stale", State::stale, 41, "62d 41dw", "62d", "62d 41dw", "62d", "62d 41dw"},
        {"stale alone", State::stale, std::nullopt, "62d", "62d", "62d", "62d", "62d"},
        {"loading", State::loading, 41, "…", "…", "… …w", "…", "…"},
        {"no data", State::noData, 41, "–d", "–d", "–d –dw", "–d", "–d"},
        {"no token", State::noToken, 41, "–d", "–d", "–d –dw", "–d", "–d"},
        {"expired", State::expired, 41, "–d", "–d", "–d –dw", "–d", "–d"},
        {"blocked", State::blocked, 41, "–", "–", "– –w", "–", "–"},
    };
    const auto slots_ = [](const std::vector<AccountRender>& renders, MenuBarMode mode, bool dual) {
        return text(MenuBarLabel::groups(renders, mode, dual));
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const std::vector one = {render(row.state, row.second)};
        const std::vector two = {one[0], one[0]};
        const auto twice = [](const std::string& once) { return once + " | " + once; };
        EXPECT_EQ(slots_(one, MenuBarMode::bars, false), row.barsOfOne);
        EXPECT_EQ(slots_(two, MenuBarMode::bars, false), twice(row.barsOfSeveral));
        EXPECT_EQ(slots_(one, MenuBarMode::bars, true), row.dualBars);
        EXPECT_EQ(slots_(two, MenuBarMode::bars, true), twice(row.dualBars));
        EXPECT_EQ(slots_(one, MenuBarMode::numbers, false), row.numbers);
        EXPECT_EQ(slots_(two, MenuBarMode::numbers, false), twice(row.numbers));
        EXPECT_EQ(slots_(one, MenuBarMode::numbers, true), row.dualNumbers);
        EXPECT_EQ(slots_(two, MenuBarMode::numbers, true), twice(row.dualNumbers));
    }
}

TEST(MenuBarLabel, theGroupsKeepTheOrderOfTheAccounts)
{
    const std::vector renders = {render(State::blocked), render(State::ok), render(State::loading)};
    EXPECT_EQ(text(MenuBarLabel::groups(renders, MenuBarMode::bars, false)), "– | 62 | …");
    EXPECT_EQ(MenuBarLabel::groups({}, MenuBarMode::bars, true), std::vector<Group>());
}

TEST(MenuBarLabel, percentsReachTheSlotsUnrounded)
{
    AccountRender exact = render(State::ok, 100.25);
    exact.sessionPercent = 62.4;
    const auto groups = MenuBarLabel::groups({exact}, MenuBarMode::bars, true);
    EXPECT_EQ(groups, (std::vector<Group>{{{62.4, false, false}, {100.25, false, true}}}));
}

TEST(MenuBarLabel, anAccountThatIsRefusedShowsNoNumbers)
{
    AccountUsageState state = test::read({test::window("session", 62)});
    state.lastError = test::error(UsageFetchError::Kind::forbidden);
    const auto renders =
        MenuBarLabel::renders({test::account("ada")}, {{"ada-id", state}}, 60, test::noon);
    EXPECT_EQ(text(MenuBarLabel::groups(renders, MenuBarMode::numbers, false)), "–");
}

TEST(MenuBarLabel, eachAccountHasItsOwnStateInTheOrderGiven)
{
    const std::map<std::string, AccountUsageState> states = {
        {"ada-id", test::read({test::window("session", 1)})},
        {"cleo-id", test::read({test::window("session", 3)}, test::noon - std::chrono::hours(1))},
        {"other-id", test::read({test::window("session", 9)})}};
    const auto renders =
        MenuBarLabel::renders({test::account("cleo"), test::account("bob"), test::account("ada")},
                              states, 60, test::noon);
    ASSERT_EQ(renders.size(), 3U);
    EXPECT_EQ(renders[1].name, "bob");
    EXPECT_EQ(text(MenuBarLabel::groups(renders, MenuBarMode::bars, false)), "3d | … | 1");
}

TEST(MenuBarLabel, theBarsStandAtTheirPlaces)
{
    const struct {
        std::vector<std::string> groups;
        std::vector<double> xs;
        double total;
    } rows[] = {
        {{}, {}, 0},
        {{""}, {}, 0},
        {{"n"}, {0}, 3},
        {{"w"}, {0}, 5},
        {{"nw"}, {0, 6}, 11},
        {{"ww"}, {0, 8}, 13},
        {{"nnn"}, {0, 6, 12}, 15},
        {{"n", "n"}, {0, 6}, 9},
        {{"n", "n", "n"}, {0, 6, 12}, 15},
        {{"n", "n", "n", "n"}, {0, 6, 12, 18}, 21},
        {{"nw", "nw"}, {0, 6, 18, 24}, 29},
        {{"n", "nw"}, {0, 10, 16}, 21},
        {{"nw", "n"}, {0, 6, 18}, 21},
        {{"nw", "nw", "nw", "nw"}, {0, 6, 18, 24, 36, 42, 54, 60}, 65},
        {{"", ""}, {}, 3},
        {{"n", ""}, {0}, 6},
        {{"", "n"}, {3}, 6},
        {{"n", "", "n"}, {0, 9}, 12},
        {{"nw", ""}, {0, 6}, 18},
        {{"nw", "", "n"}, {0, 6, 25}, 28},
        {{"", "", "", ""}, {}, 9},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::PrintToString(row.groups));
        const auto groups = groupsOf(row.groups);
        const auto geometry = MenuBarLabel::barsGeometry(groups);
        std::vector<double> xs;
        std::vector<Slot> order;
        for (const MenuBarLabel::Placed& placed : geometry.placed) {
            xs.push_back(placed.x);
            order.push_back(placed.slot);
            EXPECT_EQ(placed.width, placed.slot.wide ? 5 : 3);
        }
        std::vector<Slot> expected;
        for (const Group& group : groups)
            expected.insert(expected.end(), group.begin(), group.end());
        EXPECT_EQ(order, expected);
        EXPECT_EQ(xs, row.xs);
        EXPECT_EQ(geometry.total, row.total);
    }
}

TEST(MenuBarLabel, aNumberIsRoundedHalvesAwayFromZeroAndHasNoSign)
{
    const std::pair<double, const char*> rows[] = {
        {0, "0"},     {-0.0, "0"},   {-0.4, "0"},  {0.4, "0"},    {0.5, "1"},          {1.5, "2"},
        {2.5, "3"},   {62.49, "62"}, {62.5, "63"}, {99.5, "100"}, {1e9, "1000000000"}, {150, "150"},
        {-0.5, "-1"},
    };
    for (const auto& [percent, expected] : rows)
        EXPECT_EQ(MenuBarLabel::numberString({percent, false, false}), expected) << percent;
    EXPECT_EQ(MenuBarLabel::numberString({1e300, false, false}).size(), 301U);
    EXPECT_EQ(MenuBarLabel::numberString({MenuBarLabel::Dash{}, true, true}), "–");
    EXPECT_EQ(MenuBarLabel::numberString({MenuBarLabel::Ellipsis{}, false, false}), "…");
}

TEST(MenuBarLabel, theSettingsFourChoicesAreTheModesEachWithOneSlotOrTwo)
{
    const struct {
        MenuBarMode mode;
        bool dual;
        MenuBarDisplayChoice choice;
    } rows[] = {
        {MenuBarMode::bars, false, MenuBarDisplayChoice::sessionBars},
        {MenuBarMode::bars, true, MenuBarDisplayChoice::dualBars},
        {MenuBarMode::numbers, false, MenuBarDisplayChoice::sessionNumbers},
        {MenuBarMode::numbers, true, MenuBarDisplayChoice::dualNumbers},
    };
    for (const auto& [mode, dual, choice] : rows) {
        EXPECT_EQ(MenuBarLabel::displayChoice(mode, dual), choice);
        EXPECT_EQ(MenuBarLabel::modeOf(choice), mode);
        EXPECT_EQ(MenuBarLabel::isDual(choice), dual);
    }
}

} // namespace
} // namespace vellumor::menuBarLabelTest
