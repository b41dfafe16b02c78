#include "app/state/AccountUsageState.h"

#include "support/FakeClock.h"

#include <gtest/gtest.h>

#include <cmath>

namespace vellumor::accountUsageStateTest {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using Kind = UsageFetchError::Kind;

const Instant now = test::instant("2026-03-29T12:00:00Z");

UsageFetchError failure(Kind kind)
{
    UsageFetchError error;
    error.kind = kind;
    return error;
}

AccountUsageState readAt(Instant at)
{
    AccountUsageState state;
    state.usage.emplace();
    state.usage->fetchedAt = at;
    return state;
}

TEST(AccountUsageState, aReadingIsStaleAfterThreeIntervalsOrFiveMinutesAndFromTheFuture)
{
    const struct {
        double age;
        double interval;
        bool isStale;
    } rows[] = {
        {300, 60, false}, {300.001, 60, true}, {301, 60, true},     {360, 120, false},
        {361, 120, true}, {-60, 60, false},    {-60.001, 60, true},
    };
    for (const auto& [age, interval, isStale] : rows) {
        const auto state = readAt(now - milliseconds(std::llround(age * 1000)));
        EXPECT_EQ(state.isStale(interval, now), isStale) << age;
    }
    EXPECT_FALSE(AccountUsageState().isStale(60, now));
}

TEST(AccountUsageState, theNextChangeOfItsAgeIsTheFirstMomentAtWhichItIsStaleOrNoLonger)
{
    const struct {
        double age;
        double interval;
        std::optional<double> next; // seconds from now
    } rows[] = {
        {0, 60, 300.001},        {0, 100, 300.001}, {0, 120, 360.001},
        {299.5, 60, 0.501},      {300, 60, 0.001},  {300.001, 60, std::nullopt},
        {1e6, 60, std::nullopt}, {360, 120, 0.001}, {-60, 60, 360.001},
        {-60.001, 60, 0.001},    {-3600, 60, 3540},
    };
    for (const auto& [age, interval, next] : rows) {
        SCOPED_TRACE(age);
        const auto state = readAt(now - milliseconds(std::llround(age * 1000)));
        const auto found = state.nextStaleChange(interval, now);
        ASSERT_EQ(found.has_value(), next.has_value());
        if (!next)
            continue;
        EXPECT_EQ(*found, now + milliseconds(std::llround(*next * 1000)));
        EXPECT_EQ(state.isStale(interval, *found - milliseconds(1)), state.isStale(interval, now));
        EXPECT_NE(state.isStale(interval, *found), state.isStale(interval, now));
    }
    EXPECT_EQ(AccountUsageState().nextStaleChange(60, now), std::nullopt);
}

TEST(AccountUsageState, aReadingBetweenTwoMillisecondsChangesAtATickOfTheClock)
{
    auto state = readAt(now - std::chrono::microseconds(1500));
    const auto found = state.nextStaleChange(60, now);
    ASSERT_TRUE(found);
    EXPECT_TRUE(state.isStale(60, *found));
    EXPECT_LE(*found, now + seconds(300) + milliseconds(1));
}

TEST(AccountUsageState, aBlockEndsAtItsMoment)
{
    AccountUsageState state;
    EXPECT_FALSE(state.isBlocked(now));
    state.blockedUntil = now;
    EXPECT_FALSE(state.isBlocked(now));
    EXPECT_TRUE(state.isBlocked(now - milliseconds(1)));
}

TEST(AccountUsageState, aFailureIsToldApartFromAMissingToken)
{
    AccountUsageState state = readAt(now);
    EXPECT_FALSE(state.didFailRefresh());
    state.lastError = failure(Kind::keychain);
    EXPECT_TRUE(state.didFailRefresh());
    EXPECT_FALSE(state.isNoToken());
    state.usage.reset();
    EXPECT_FALSE(state.didFailRefresh());
    EXPECT_TRUE(state.isNoToken());
    state.lastError = failure(Kind::noService);
    EXPECT_TRUE(state.isNoToken());
    state.lastError = failure(Kind::unauthorized);
    EXPECT_FALSE(state.isNoToken());
}

TEST(AccountUsageState, aConclusionHoldsForTheTokenThatItIsAbout)
{
    AccountUsageState concluded = readAt(now);
    concluded.lastError = failure(Kind::unauthorized);
    concluded.revival = RevivalStatus::needsSignIn;
    concluded.concludedAbout = now;
    concluded.blockedUntil = now;
    EXPECT_EQ(forgettingSupersededConclusions(concluded, now), concluded);
    AccountUsageState forgotten = concluded;
    forgotten.lastError.reset();
    forgotten.revival.reset();
    forgotten.concludedAbout.reset();
    EXPECT_EQ(forgettingSupersededConclusions(concluded, now + milliseconds(1)), forgotten);
    EXPECT_EQ(forgettingSupersededConclusions(concluded, std::nullopt), forgotten);
    concluded.concludedAbout.reset();
    EXPECT_EQ(forgettingSupersededConclusions(concluded, std::nullopt), forgotten);
    AccountUsageState quiet = readAt(now);
    quiet.concludedAbout = now;
    EXPECT_EQ(forgettingSupersededConclusions(quiet, std::nullopt), quiet);
}

TEST(AccountUsageState, theAgeIsThatOfTheOldestReadingThatDoesNotWaitForTheUser)
{
    EXPECT_EQ(DataAge::oldest({}), std::nullopt);
    EXPECT_EQ(DataAge::oldest({AccountUsageState()}), std::nullopt);
    EXPECT_EQ(DataAge::oldest({readAt(now), readAt(now - seconds(5))}), now - seconds(5));
    AccountUsageState waiting = readAt(now - seconds(100));
    for (const auto revival :
         {RevivalStatus::disabled, RevivalStatus::needsSignIn, RevivalStatus::unavailable}) {
        waiting.revival = revival;
        EXPECT_EQ(DataAge::oldest({waiting, readAt(now)}), now);
        EXPECT_EQ(DataAge::oldest({waiting}), now - seconds(100)); // there is nobody else
    }
    waiting.revival = RevivalStatus::retrying;
    EXPECT_EQ(DataAge::oldest({waiting, readAt(now)}), now - seconds(100));
    waiting.lastError = failure(Kind::forbidden);
    EXPECT_EQ(DataAge::oldest({waiting, readAt(now)}), now);
}

TEST(AccountUsageState, whereEveryAccountWaitsForTheUserTheAgeIsThatOfAnyReading)
{
    AccountUsageState withoutToken;
    withoutToken.lastError = failure(Kind::noService);
    AccountUsageState signedOut = readAt(now - seconds(100));
    signedOut.revival = RevivalStatus::needsSignIn;
    EXPECT_EQ(DataAge::oldest({withoutToken, signedOut}), now - seconds(100));
    EXPECT_EQ(DataAge::oldest({withoutToken, signedOut, readAt(now)}), now);
}

} // namespace
} // namespace vellumor::accountUsageStateTest
