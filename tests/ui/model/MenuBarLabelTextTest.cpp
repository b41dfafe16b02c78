// What the label says to a screen reader, and when it changes by time alone.

#include "ui/model/MenuBarLabel.h"

#include "ui/model/Readings.h"

#include <gtest/gtest.h>

#include <cmath>

namespace vellumor::menuBarLabelTextTest {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using test::noon;
using State = AccountRenderState;

AccountRender render(State state, const std::string& name = "ada")
{
    AccountRender render;
    render.name = name;
    render.state = state;
    render.sessionPercent = 62.5;
    render.worstNonSessionPercent = 41.4;
    render.nonSessionPercents = {41.4};
    render.worstNonSessionTitle = "Weekly (Opus)";
    return render;
}

std::string described(const std::vector<AccountRender>& renders, MenuBarMode mode, bool dual)
{
    return MenuBarLabel::accessibilityDescription(renders, mode, dual);
}

TEST(MenuBarLabelText, everyStateHasItsWords)
{
    const std::pair<State, const char*> rows[] = {
        {State::ok, "ada 63%, Weekly (Opus) 41%"},
        {State::stale, "ada 63%, Weekly (Opus) 41%, showing last update"},
        {State::loading, "ada loading"},
        {State::noData, "ada no data"},
        {State::noToken, "ada sign-in needed"},
        {State::expired, "ada sign-in expired"},
        {State::blocked, "ada blocked"},
    };
    for (const auto& [state, text] : rows) {
        EXPECT_EQ(described({render(state)}, MenuBarMode::bars, true), text);
        EXPECT_EQ(described({render(state)}, MenuBarMode::numbers, true), text);
    }
}

TEST(MenuBarLabelText, theSecondPercentIsToldWhereItIsShown)
{
    const std::string first = "ada 63%";
    const std::string both = "ada 63%, Weekly (Opus) 41%";
    const struct {
        MenuBarMode mode;
        bool dual;
        std::size_t accounts;
        bool showsSecond;
    } rows[] = {
        {MenuBarMode::bars, false, 1, true},     {MenuBarMode::bars, false, 2, false},
        {MenuBarMode::bars, true, 1, true},      {MenuBarMode::bars, true, 2, true},
        {MenuBarMode::numbers, false, 1, false}, {MenuBarMode::numbers, false, 2, false},
        {MenuBarMode::numbers, true, 1, true},   {MenuBarMode::numbers, true, 2, true},
    };
    for (const auto& [mode, dual, accounts, showsSecond] : rows) {
        const std::string& once = showsSecond ? both : first;
        EXPECT_EQ(described(std::vector(accounts, render(State::ok)), mode, dual),
                  accounts == 1 ? once : once + ", " + once);
    }
}

TEST(MenuBarLabelText, aStaleReadingWithoutASecondPercentSaysSoToo)
{
    AccountRender stale = render(State::stale);
    EXPECT_EQ(described({stale}, MenuBarMode::numbers, false), "ada 63%, showing last update");
    stale.worstNonSessionPercent.reset();
    EXPECT_EQ(described({stale}, MenuBarMode::bars, true), "ada 63%, showing last update");
}

TEST(MenuBarLabelText, aSecondPercentWithoutATitleIsTheWeeks)
{
    AccountRender untitled = render(State::ok);
    untitled.worstNonSessionTitle.reset();
    EXPECT_EQ(described({untitled}, MenuBarMode::bars, true), "ada 63%, weekly 41%");
}

TEST(MenuBarLabelText, theAccountsAreToldInTheirOrder)
{
    EXPECT_EQ(described({render(State::blocked, "cleo"), render(State::ok),
                         render(State::loading, "bob")},
                        MenuBarMode::numbers, false),
              "cleo blocked, ada 63%, bob loading");
}

TEST(MenuBarLabelText, withoutAPinnedAccountItSaysSo)
{
    for (const MenuBarMode mode : {MenuBarMode::bars, MenuBarMode::numbers}) {
        EXPECT_EQ(described({}, mode, false), "Vellumor: no accounts pinned");
        EXPECT_EQ(described({}, mode, true), "Vellumor: no accounts pinned");
    }
}

// The readings' ages in seconds, one account each.
std::optional<double> nextAfter(const std::vector<double>& ages, double interval)
{
    std::vector<Account> pinned;
    std::map<std::string, AccountUsageState> states;
    for (const double age : ages) {
        pinned.push_back(test::account("a" + std::to_string(pinned.size())));
        states[pinned.back().id] = test::read({}, noon - milliseconds(std::llround(age * 1000)));
    }
    const auto next = MenuBarLabel::nextStaleness(pinned, states, interval, noon);
    return next ? std::optional(secondsBetween(noon, *next)) : std::nullopt;
}

TEST(MenuBarLabelStaleness, theNextIsThatOfTheReadingThatGrowsTooOldFirst)
{
    const struct {
        std::vector<double> ages;
        double interval;
        std::optional<double> next;
    } rows[] = {
        {{}, 60, std::nullopt},
        {{0}, 60, 300.001},
        {{0}, 200, 600.001},
        {{299}, 60, 1.001},
        {{300}, 60, 0.001},
        {{300.001}, 60, std::nullopt},
        {{4000}, 60, std::nullopt},
        {{100, 200, 50}, 60, 100.001},
        {{4000, 100}, 60, 200.001},
        {{-60}, 60, 360.001}, // a little ahead: as good as a new one
        {{-61}, 60, 1},       // too far ahead: becomes good once the clock is near it
        {{-3600, 299.5}, 60, 0.501},
    };
    for (const auto& [ages, interval, next] : rows) {
        SCOPED_TRACE(testing::PrintToString(ages));
        const auto found = nextAfter(ages, interval);
        ASSERT_EQ(found.has_value(), next.has_value());
        if (next) {
            EXPECT_NEAR(*found, *next, 1e-6);
        }
    }
}

TEST(MenuBarLabelStaleness, atThatMomentTheDrawingChanges)
{
    const std::vector pinned = {test::account("ada")};
    for (const double age : {-4000.0, -60.001, -60.0, 0.0, 17.5, 300.0}) {
        const std::map<std::string, AccountUsageState> states = {
            {"ada-id", test::read({test::window("session", 5)},
                                  noon - milliseconds(std::llround(age * 1000)))}};
        const auto next = MenuBarLabel::nextStaleness(pinned, states, 60, noon);
        ASSERT_TRUE(next);
        const auto at = [&](Instant now) { return MenuBarLabel::renders(pinned, states, 60, now); };
        EXPECT_EQ(at(*next - milliseconds(1)), at(noon)) << age;
        EXPECT_NE(at(*next), at(noon)) << age;
    }
}

TEST(MenuBarLabelStaleness, whatIsNotDrawnHasNone)
{
    const std::vector pinned = {test::account("ada")};
    EXPECT_EQ(MenuBarLabel::nextStaleness(pinned, {}, 60, noon), std::nullopt);
    EXPECT_EQ(MenuBarLabel::nextStaleness(
                  pinned, {{"ada-id", test::failed(UsageFetchError::Kind::transport)}}, 60, noon),
              std::nullopt);
    EXPECT_EQ(MenuBarLabel::nextStaleness(pinned, {{"bob-id", test::read({})}}, 60, noon),
              std::nullopt);
}

// Its numbers do not appear, so their age changes nothing.
TEST(MenuBarLabelStaleness, theReadingOfARefusedAccountIsNotDrawn)
{
    AccountUsageState refused = test::read({});
    refused.lastError = test::error(UsageFetchError::Kind::forbidden);
    EXPECT_EQ(MenuBarLabel::nextStaleness({test::account("ada")}, {{"ada-id", refused}}, 60, noon),
              std::nullopt);
}

} // namespace
} // namespace vellumor::menuBarLabelTextTest
