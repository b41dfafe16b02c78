#include "ui/model/AccountRender.h"

#include "ui/model/Readings.h"

#include <gtest/gtest.h>

namespace vellumor::accountRenderTest {
namespace {

using std::chrono::milliseconds;
using test::noon;
using Kind = UsageFetchError::Kind;
using State = AccountRenderState;

constexpr double interval = 60;

const TokenStatus everyToken[] = {TokenStatus::readable, TokenStatus::expired,
                                  TokenStatus::signedOut, TokenStatus::needsApproval,
                                  TokenStatus::notFound};
const Kind everyKind[] = {Kind::keychain,  Kind::rateLimited, Kind::http,         Kind::decode,
                          Kind::transport, Kind::noService,   Kind::unauthorized, Kind::forbidden};

State stateOf(TokenStatus token, const AccountUsageState& state, Instant now = noon)
{
    return AccountRender::of(test::account("ada", token), &state, interval, now).state;
}

TEST(AccountRender, aRefusalOutranksEverything)
{
    for (const TokenStatus token : everyToken) {
        AccountUsageState state = test::failed(Kind::forbidden);
        EXPECT_EQ(stateOf(token, state), State::blocked);
        state.isLoading = true;
        EXPECT_EQ(stateOf(token, state), State::blocked);
        state.usage.emplace().fetchedAt = noon;
        EXPECT_EQ(stateOf(token, state), State::blocked);
        state.usage->fetchedAt = {};
        EXPECT_EQ(stateOf(token, state), State::blocked);
    }
}

TEST(AccountRender, aReadingOutranksTheTokenAndEveryOtherError)
{
    for (const TokenStatus token : everyToken) {
        AccountUsageState state = test::read({test::window("session", 5)});
        EXPECT_EQ(stateOf(token, state), State::ok);
        for (const Kind kind : everyKind) {
            if (kind == Kind::forbidden)
                continue;
            state.lastError = test::error(kind);
            EXPECT_EQ(stateOf(token, state), State::ok);
            EXPECT_EQ(stateOf(token, state, noon + std::chrono::hours(1)), State::stale);
        }
    }
}

TEST(AccountRender, aReadingIsStaleFromAMillisecondAfterFiveMinutesOn)
{
    const AccountUsageState state = test::read({});
    const struct {
        Instant now;
        State expected;
    } rows[] = {
        {noon, State::ok},
        {noon + std::chrono::seconds(300), State::ok},
        {noon + milliseconds(300001), State::stale},
        {noon - std::chrono::seconds(60), State::ok},
        {noon - milliseconds(60001), State::stale},
    };
    for (const auto& [now, expected] : rows)
        EXPECT_EQ(stateOf(TokenStatus::readable, state, now), expected)
            << secondsBetween(noon, now);
    const AccountRender slow =
        AccountRender::of(test::account("ada"), &state, 120, noon + std::chrono::seconds(360));
    EXPECT_EQ(slow.state, State::ok);
}

TEST(AccountRender, withoutAReadingATokenThatIsNotReadableDecides)
{
    const std::pair<TokenStatus, State> rows[] = {
        {TokenStatus::expired, State::expired},
        {TokenStatus::signedOut, State::expired},
        {TokenStatus::needsApproval, State::noToken},
        {TokenStatus::notFound, State::noToken},
    };
    for (const auto& [token, expected] : rows) {
        AccountUsageState state;
        EXPECT_EQ(stateOf(token, state), expected);
        state.isLoading = true;
        EXPECT_EQ(stateOf(token, state), expected);
        for (const Kind kind : everyKind) {
            if (kind == Kind::forbidden)
                continue;
            state.lastError = test::error(kind);
            EXPECT_EQ(stateOf(token, state), expected);
        }
    }
}

TEST(AccountRender, withoutAReadingTheErrorOfAReadableTokenDecides)
{
    const struct {
        std::optional<Kind> kind;
        State waiting;
        State loading; // while a fetch is under way
    } rows[] = {
        {Kind::keychain, State::noToken, State::noToken},
        {Kind::noService, State::noToken, State::noToken},
        {Kind::unauthorized, State::expired, State::expired},
        {std::nullopt, State::loading, State::loading},
        {Kind::rateLimited, State::noData, State::loading},
        {Kind::http, State::noData, State::loading},
        {Kind::decode, State::noData, State::loading},
        {Kind::transport, State::noData, State::loading},
    };
    for (const auto& [kind, waiting, loading] : rows) {
        SCOPED_TRACE(kind ? static_cast<int>(*kind) : -1);
        AccountUsageState state;
        if (kind)
            state.lastError = test::error(*kind);
        EXPECT_EQ(stateOf(TokenStatus::readable, state), waiting);
        state.isLoading = true;
        EXPECT_EQ(stateOf(TokenStatus::readable, state), loading);
    }
}

TEST(AccountRender, anAccountOfWhichNothingIsKnownGoesByItsTokenAlone)
{
    const std::pair<TokenStatus, State> rows[] = {
        {TokenStatus::readable, State::loading},      {TokenStatus::expired, State::expired},
        {TokenStatus::signedOut, State::expired},     {TokenStatus::notFound, State::noToken},
        {TokenStatus::needsApproval, State::noToken},
    };
    for (const auto& [token, expected] : rows) {
        AccountRender render;
        render.name = "ada";
        render.state = expected;
        EXPECT_EQ(AccountRender::of(test::account("ada", token), nullptr, interval, noon), render);
    }
}

TEST(AccountRender, theNumbersAreThoseOfTheSessionAndOfTheFullestOther)
{
    AccountUsageState state =
        test::read({test::window("weekly_all", 41), test::window("session", 62.4),
                    test::window("seven_day_opus", 80), test::window("seven_day_sonnet", 80)});
    AccountRender render;
    render.name = "ada";
    render.state = State::ok;
    render.sessionPercent = 62.4;
    render.worstNonSessionPercent = 80;
    render.nonSessionPercents = {41, 80, 80};
    render.worstNonSessionTitle = "Weekly (Opus)";
    EXPECT_EQ(AccountRender::of(test::account("ada"), &state, interval, noon), render);
    state.usage->windows[2].percent = 79.9;
    render.nonSessionPercents = {41, 79.9, 80};
    render.worstNonSessionTitle = "Weekly (Sonnet)";
    EXPECT_EQ(AccountRender::of(test::account("ada"), &state, interval, noon), render);
}

TEST(AccountRender, theTitleOfTheFullestOtherHasItsScope)
{
    AccountUsageState state = test::read({test::window("weekly_scoped", 3)});
    state.usage->windows[0].scope = "Haiku";
    const auto render = AccountRender::of(test::account("ada"), &state, interval, noon);
    EXPECT_EQ(render.worstNonSessionTitle, "Weekly (Haiku)");
}

TEST(AccountRender, withoutASessionItsPercentIsZeroAndWithoutOthersThereIsNoSecond)
{
    AccountUsageState state = test::read({test::window("weekly_all", 41)});
    const auto week = AccountRender::of(test::account("ada"), &state, interval, noon);
    EXPECT_EQ(week.sessionPercent, 0);
    EXPECT_EQ(week.worstNonSessionPercent, 41);
    state = test::read({test::window("session", 41)});
    const auto session = AccountRender::of(test::account("ada"), &state, interval, noon);
    EXPECT_EQ(session.sessionPercent, 41);
    EXPECT_EQ(session.worstNonSessionPercent, std::nullopt);
    EXPECT_EQ(session.worstNonSessionTitle, std::nullopt);
    EXPECT_TRUE(session.nonSessionPercents.empty());
}

} // namespace
} // namespace vellumor::accountRenderTest
