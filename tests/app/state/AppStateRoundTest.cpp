// Who is fetched in which order, and what of a fetch is shown meanwhile and afterwards.

#include "app/state/AppState.h"

#include "app/state/AppStateTesting.h"

namespace vellumor::appStateRoundTest {
namespace {

using std::chrono::seconds;
using test::failure;
using test::Gate;
using test::Names;
using Kind = UsageFetchError::Kind;

struct AppStateRoundTest : test::AppStateTesting {
    // The accounts that were revived or read since the last time, in that order.
    Names takeFetched()
    {
        Names names;
        for (const std::string& detail : std::exchange(others.details, {})) {
            if (!detail.starts_with("revive ") && !detail.starts_with("shared "))
                continue;
            const std::string rest = detail.substr(detail.find("/.claude-") + 9);
            names.push_back(rest.substr(0, rest.find(' ')));
        }
        return names;
    }
};

TEST_F(AppStateRoundTest, inARoundAndInTheRotationThePollableComeBeforeTheRevivable)
{
    add("ada", TokenStatus::expired);
    add("ben");
    add("cal", TokenStatus::expired);
    add("dot");
    others.attempt = TokenReviver::Attempt::throttled;
    rescan();
    waitFor(state.refresh(false));
    const Names expected = {"ben", "dot", "ada", "cal"};
    EXPECT_EQ(takeFetched(), expected);
    for (std::size_t tick = 0; tick < expected.size(); ++tick) {
        clock.advance(seconds(60));
        waitFor(state.refreshNext());
    }
    EXPECT_EQ(takeFetched(), expected);
}

TEST_F(AppStateRoundTest, aRevivalIsShownAsLongAsItIsUnderWay)
{
    const std::pair<FetchResult, RevivalStatus> rows[] = {
        {test::reading(40, clock.now()), RevivalStatus::succeeded},
        {failure(Kind::unauthorized), RevivalStatus::needsSignIn},
    };
    add("ada", TokenStatus::expired);
    rescan();
    others.expiryAfterRevival = clock.now() + std::chrono::hours(9);
    for (const auto& [result, end] : rows) {
        Gate afterRevival;
        others.gates = {&afterRevival};
        others.results = {result};
        auto tick = state.refreshNext();
        settle();
        EXPECT_EQ(of("ada").revival, RevivalStatus::reviving);
        EXPECT_TRUE(of("ada").isLoading);
        afterRevival.open();
        waitFor(std::move(tick));
        EXPECT_EQ(of("ada").revival, end);
    }
}

TEST_F(AppStateRoundTest, whetherTheLastOutcomeCameAboutOfflineIsKept)
{
    add("ada");
    rescan();
    for (const bool isOnline : {false, true, false}) {
        others.online = isOnline;
        waitFor(state.refreshNext());
        EXPECT_EQ(of("ada").isOffline, !isOnline);
    }
}

TEST_F(AppStateRoundTest, theAgeOfWhatIsShownIsThatOfTrackedAccountsAlone)
{
    addAll({"ada", "ben"});
    rescan();
    EXPECT_EQ(state.dataUpdatedAt(), std::nullopt);
    applyTo("ada", read(UsageSource::endpoint));
    const Instant oldest = clock.now();
    clock.advance(seconds(100));
    applyTo("ben", read(UsageSource::endpoint));
    EXPECT_EQ(state.dataUpdatedAt(), oldest);
    state.setTracked(id("ada"), false);
    EXPECT_EQ(state.dataUpdatedAt(), clock.now());
}

} // namespace
} // namespace vellumor::appStateRoundTest
