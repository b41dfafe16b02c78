#include "status/sources/StatusInput.h"

#include "support/ScopedZone.h"
#include "ui/model/Readings.h"

#include <gtest/gtest.h>

namespace vellumor::statusInputTest {
namespace {

using std::chrono::hours;
using std::chrono::minutes;
using test::noon;
using test::window;
using Kind = UsageFetchError::Kind;

struct StatusInputTest : testing::Test {
    test::ScopedZone zone{"UTC"};
    StatusInput input;

    void add(const std::string& name, std::optional<AccountUsageState> state = std::nullopt,
             TokenStatus token = TokenStatus::readable)
    {
        Account account = test::account(name, token);
        account.email = "marker-mail@example.org";
        account.org = "marker-organisation";
        account.resolvedService = "marker-service";
        account.order = static_cast<int>(input.accounts.size());
        input.accounts.push_back(account);
        if (state)
            input.states[account.id] = *std::move(state);
    }
    [[nodiscard]] StatusReport report(Instant now = noon) const
    {
        return input.report(now, [](Instant) { return "TIME"; });
    }
};

TEST_F(StatusInputTest, anAccountHasTheWordsOfThePopover)
{
    auto state = test::read({window("session", 62, noon + hours(2)), window("weekly_all", 40)},
                            noon - minutes(1));
    state.usage->windows[1].scope = "Opus";
    state.usage->extraUsage.emplace();
    state.usage->extraUsage->isEnabled = true;
    state.usage->extraUsage->usedCredits = 1250;
    state.usage->extraUsage->currency = "EUR";
    state.isOffline = true;
    add("ada", state);
    const StatusWindow session{"session", "Session", 62, "62%", noon + hours(2),
                               "2h 0m",   true,      "", false};
    const StatusWindow weekly{"weekly_all", "Weekly", 40,     "40%", std::nullopt,
                              "",           false,    "Opus", false};
    const StatusAccount ada{"ada-id",
                            "ada",
                            "ok",
                            {session, weekly},
                            *state.usage->extraUsage->creditsLine(),
                            false,
                            "↗ Session on pace to hit the limit ~TIME",
                            noon - minutes(1),
                            {"Offline — showing last update"}};
    const auto told = report();
    ASSERT_EQ(told.accounts.size(), 1U);
    EXPECT_EQ(told.accounts[0].windows, ada.windows);
    EXPECT_EQ(told.accounts[0].credits, ada.credits);
    EXPECT_EQ(told.accounts[0].forecast, ada.forecast);
    EXPECT_EQ(told.accounts[0].notes, ada.notes);
    EXPECT_EQ(told, (StatusReport{{ada}, noon - minutes(1)}));
}

TEST_F(StatusInputTest, theTrackedAccountsStandInTheUsersOrder)
{
    for (const char* name : {"ada", "bob", "cleo"})
        add(name);
    input.accounts[0].order = 9;
    input.accounts[1].tracked = false;
    const auto told = report();
    ASSERT_EQ(told.accounts.size(), 2U);
    EXPECT_EQ(told.accounts[0].name, "cleo");
    EXPECT_EQ(told.accounts[1].name, "ada");
    EXPECT_EQ(told.accounts[0].state, "loading");
    EXPECT_EQ(told.updatedAt, std::nullopt);
}

TEST_F(StatusInputTest, theStateIsAWord)
{
    struct Row {
        AccountUsageState state;
        TokenStatus token;
        const char* word;
    };
    const auto fresh = test::read({window("session", 1)});
    const Row rows[] = {
        {fresh, TokenStatus::readable, "ok"},
        {test::read({window("session", 1)}, noon - hours(9)), TokenStatus::readable, "stale"},
        {{}, TokenStatus::readable, "loading"},
        {test::failed(Kind::transport), TokenStatus::readable, "noData"},
        {test::failed(Kind::keychain), TokenStatus::readable, "noToken"},
        {{}, TokenStatus::expired, "expired"},
        {test::failed(Kind::forbidden), TokenStatus::readable, "blocked"},
    };
    for (const auto& [state, token, word] : rows) {
        input = {};
        add("ada", state, token);
        EXPECT_EQ(report().accounts[0].state, word);
    }
}

TEST_F(StatusInputTest, whyThereAreNoNumbersIsANote)
{
    add("ada", test::failed(Kind::rateLimited));
    EXPECT_EQ(report().accounts[0].notes,
              (std::vector<std::string>{"Rate limited — waiting before the next refresh"}));
}

TEST_F(StatusInputTest, whatIsHeldInConfidenceIsNotInIt)
{
    add("ada", test::failed(Kind::keychain));
    input.states["ada-id"].lastError->detail = "marker-detail";
    const auto account = report().accounts[0];
    std::string all =
        account.id + account.name + account.state + account.credits + account.forecast;
    for (const std::string& note : account.notes)
        all += note;
    EXPECT_EQ(all.find("marker"), std::string::npos) << all;
    EXPECT_EQ(all.find("/home"), std::string::npos) << all;
}

TEST_F(StatusInputTest, theNextChangeByTimeAloneIsThatOfTheFirstReadingToGrowOld)
{
    EXPECT_EQ(input.nextStaleChange(noon), std::nullopt);
    add("ada", test::read({window("session", 1)}, noon));
    add("bob", test::read({window("session", 1)}, noon - minutes(2)));
    const auto next = input.nextStaleChange(noon);
    ASSERT_TRUE(next);
    EXPECT_EQ(report(*next - std::chrono::milliseconds(2)).accounts[1].state, "ok");
    EXPECT_EQ(report(*next).accounts[1].state, "stale");
    EXPECT_EQ(report(*next).accounts[0].state, "ok");
    input.accounts[1].tracked = false;
    EXPECT_GT(*input.nextStaleChange(noon), *next);
}

} // namespace
} // namespace vellumor::statusInputTest
