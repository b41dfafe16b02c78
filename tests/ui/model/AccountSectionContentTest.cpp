#include "ui/model/AccountSectionContent.h"

#include "support/ScopedZone.h"
#include "ui/model/Readings.h"

#include <gtest/gtest.h>

namespace vellumor::accountSectionContentTest {
namespace {

using std::chrono::hours;
using std::chrono::minutes;
using test::noon;
using test::window;
using Kind = UsageFetchError::Kind;

constexpr std::chrono::days week{7};

struct AccountSectionContentTest : testing::Test {
    test::ScopedZone zone{"UTC"};
    Account account = test::account("ada");
    std::optional<AccountUsageState> state;
    UsageSamples history;
    AnchorsByKind anchors;
    bool isStale = false;

    [[nodiscard]] AccountSectionContent content(Instant now = noon) const
    {
        const AccountSectionInput input{account, state ? &*state : nullptr, &history, &anchors,
                                        isStale};
        return accountSectionContent(input, now, [](Instant) { return "TIME"; });
    }
    // The first row of a reading of this one window.
    [[nodiscard]] UsageRowContent row(const LimitWindow& only)
    {
        state = test::read({only});
        return content().rows.at(0);
    }
};

TEST_F(AccountSectionContentTest, theHeaderNamesTheAccountAndItsHistory)
{
    account.plan = "Max";
    EXPECT_EQ(content().configDir, account.configDir);
    EXPECT_EQ(content().name, "ada");
    EXPECT_EQ(content().plan, "Max");
    EXPECT_EQ(content().historyHelp, "History for ada");
    account.plan.reset();
    EXPECT_EQ(content().plan, "");
}

TEST_F(AccountSectionContentTest, ofAnAccountOfWhichNothingIsKnownTheHeaderIsAll)
{
    AccountSectionContent header;
    header.configDir = account.configDir;
    header.name = "ada";
    header.historyHelp = "History for ada";
    EXPECT_EQ(content(), header);
    state.emplace();
    EXPECT_EQ(content(), header);
}

TEST_F(AccountSectionContentTest, aFirstFetchUnderWayIsWaitedFor)
{
    state.emplace().isLoading = true;
    EXPECT_TRUE(content().isWaiting);
    EXPECT_EQ(content().substitute, "");
    EXPECT_EQ(content().note, std::nullopt);
    state->lastError = test::error(Kind::transport);
    EXPECT_FALSE(content().isWaiting);
    EXPECT_EQ(content().substitute, "Couldn’t update usage numbers");
    state = test::read({window("session", 3)});
    state->isLoading = true;
    EXPECT_FALSE(content().isWaiting);
}

TEST_F(AccountSectionContentTest, theRowsAreTheWindowsInTheirOrder)
{
    LimitWindow scoped = window("weekly_scoped", 99.5);
    scoped.scope = "Haiku";
    state = test::read({window("weekly_all", 41.4), window("session", 62.5), scoped,
                        window("weekly_all", -3), window("max_tier-x", 150)});
    const struct {
        const char* title;
        double percent;
        const char* percentText;
    } rows[] = {{"Weekly", 41.4, "41%"},
                {"Session", 62.5, "63%"},
                {"Weekly (Haiku)", 99.5, "100%"},
                {"Weekly", -3, "0%"},
                {"Max tier x", 150, "150%"}};
    const auto shown = content().rows;
    ASSERT_EQ(shown.size(), std::size(rows));
    for (std::size_t i = 0; i < shown.size(); ++i) {
        EXPECT_EQ(shown[i].title, rows[i].title);
        EXPECT_EQ(shown[i].percent, rows[i].percent);
        EXPECT_EQ(shown[i].percentText, rows[i].percentText);
        EXPECT_FALSE(shown[i].isStale);
    }
    isStale = true;
    for (const UsageRowContent& row : content().rows)
        EXPECT_TRUE(row.isStale);
}

TEST_F(AccountSectionContentTest, aReadingWithoutWindowsSaysSo)
{
    state = test::read({});
    EXPECT_EQ(content().substitute, "No usage data");
    EXPECT_TRUE(content().rows.empty());
    isStale = true;
    EXPECT_EQ(content().note, (NoteContent{"Showing last update", true}));
}

TEST_F(AccountSectionContentTest, aReportedResetIsCountedDownTo)
{
    const auto session = row(window("session", 5, noon + minutes(134)));
    EXPECT_EQ(session.resetText, "2h 14m");
    EXPECT_EQ(session.tooltip, "Resets today at 2:14 PM");
    EXPECT_EQ(session.spoken(), "Session 5%, 2h 14m");
    EXPECT_EQ(row(window("weekly_all", 5, noon - minutes(1))).resetText, "now");
    anchors["weekly_all"] = {noon + hours(1), false};
    EXPECT_EQ(row(window("weekly_all", 5, noon + hours(30))).resetText, "1d 6h");
}

TEST_F(AccountSectionContentTest, aSessionWithoutAResetHasNotStarted)
{
    const auto shown = row(window("session", 0));
    EXPECT_EQ(shown.resetText, "not started");
    EXPECT_EQ(shown.tooltip,
              "No session is running. The 5-hour session window starts with your first message.");
    anchors["session"] = {noon - hours(1), false};
    EXPECT_EQ(row(window("session", 0)), shown);
}

TEST_F(AccountSectionContentTest, anIdleWeekIsEstimatedFromItsAnchor)
{
    const struct {
        std::chrono::seconds anchorAfterNow;
        const char* resetText;
    } rows[] = {
        {-week + hours(27), "1d 3h"},
        {hours(27), "1d 3h"},
        {-50 * week + hours(1), "1h 0m"},
        {3 * week + hours(1), "1h 0m"},
        {-week, "7d 0h"}, // just now: the next is a whole week ahead
        {std::chrono::seconds(0), "7d 0h"},
        {std::chrono::seconds(120), "2m"},
    };
    for (const auto& [after, resetText] : rows) {
        anchors["weekly_all"] = {noon + after, false};
        EXPECT_EQ(row(window("weekly_all", 0)).resetText, resetText) << after.count();
    }
    anchors["weekly_all"] = {noon + hours(27), false};
    EXPECT_EQ(row(window("weekly_all", 0)).tooltip,
              "Estimated to reset tomorrow at 3:00 PM based on this window's last observed reset.");
}

TEST_F(AccountSectionContentTest, whatCannotBeEstimatedSaysNothing)
{
    const auto expectNothing = [this](const LimitWindow& window) {
        const auto shown = row(window);
        EXPECT_EQ(shown.resetText, "");
        EXPECT_EQ(shown.tooltip, "");
        EXPECT_EQ(shown.spoken(), shown.title + " " + shown.percentText);
    };
    expectNothing(window("weekly_all", 0)); // without an anchor
    for (const char* const kind : {"weekly_all", "monthly", "burst"})
        anchors[kind] = {noon + hours(1), false};
    LimitWindow active = window("weekly_all", 5);
    active.isActive = true;
    expectNothing(active);
    LimitWindow unknown = window("monthly", 5);
    unknown.group = "";
    expectNothing(unknown);
    LimitWindow ofSession = window("burst", 5);
    ofSession.group = "session";
    expectNothing(ofSession);
    anchors["weekly_all"].offCadence = true;
    expectNothing(window("weekly_all", 0));
}

TEST_F(AccountSectionContentTest, theForecastStandsBehindAnArrow)
{
    // Half of the week is gone.
    state = test::read({window("weekly_all", 42, noon + hours(84))});
    EXPECT_EQ(content().forecast, "↗ Weekly on pace for ~85% by reset");
    state = test::read({window("weekly_all", 60, noon + hours(84))});
    EXPECT_EQ(content().forecast, "↗ Weekly on pace to hit the limit ~Tuesday TIME");
    state = test::read({window("session", 80, noon + hours(2))});
    EXPECT_EQ(content().forecast, "↗ Session on pace to hit the limit ~TIME");
    LimitWindow scoped = window("weekly_scoped", 42, noon + hours(84));
    scoped.scope = "Haiku";
    state = test::read({scoped});
    EXPECT_EQ(content().forecast, "↗ Weekly (Haiku) on pace for ~85% by reset");
}

TEST_F(AccountSectionContentTest, theForecastLeansOnTheHistory)
{
    state = test::read({window("weekly_all", 42, noon + hours(84))});
    for (int i = 12; i >= 0; --i) // an hour in which it has climbed by 12
        history.push_back({noon - minutes(5 * i), {{"weekly_all", 42.0 - i}}});
    EXPECT_NE(content().forecast.find("↗ Weekly on pace to hit the limit ~"), std::string::npos)
        << content().forecast;
}

TEST_F(AccountSectionContentTest, withoutAForecastThereIsNoLine)
{
    state = test::read({window("weekly_all", 0.9, noon + hours(84)), window("session", 50)});
    EXPECT_EQ(content().forecast, "");
    state = test::read({});
    EXPECT_EQ(content().forecast, "");
}

TEST_F(AccountSectionContentTest, creditsAreShownUnlessTheyAreOff)
{
    state = test::read({window("session", 5)});
    EXPECT_EQ(content().credits, "");
    ExtraUsage& credits = state->usage->extraUsage.emplace();
    credits.usedCredits = 1250;
    credits.monthlyLimit = 5000;
    credits.currency = "EUR";
    EXPECT_EQ(content().credits, "");
    credits.isEnabled = true;
    EXPECT_EQ(content().credits, "Usage credits · €12.50 of €50.00");
    EXPECT_FALSE(content().areCreditsExhausted);
    credits.isEnabled = false;
    credits.usedCredits = 5000;
    EXPECT_EQ(content().credits, "Usage credits · €50.00 of €50.00 — limit reached");
    EXPECT_TRUE(content().areCreditsExhausted);
}

TEST_F(AccountSectionContentTest, theNoteUnderAReadingIsAWarningAndARevivalIsNone)
{
    state = test::read({window("session", 5)});
    EXPECT_EQ(content().note, std::nullopt);
    isStale = true;
    EXPECT_EQ(content().note, (NoteContent{"Showing last update", true}));
    state->isOffline = true;
    EXPECT_EQ(content().note, (NoteContent{"Offline — showing last update", true}));
    state->revival = RevivalStatus::reviving;
    EXPECT_EQ(content().note, (NoteContent{"Refreshing your sign-in…", false}));
    EXPECT_EQ(content().rows.size(), 1U);
}

TEST_F(AccountSectionContentTest, withoutAReadingTheReasonStandsInPlaceOfTheRows)
{
    state = test::failed(Kind::rateLimited);
    EXPECT_EQ(content().substitute, "Rate limited — waiting before the next refresh");
    EXPECT_EQ(content().note, std::nullopt);
    state->revival = RevivalStatus::retrying;
    EXPECT_EQ(content().note, (NoteContent{"Couldn’t refresh your sign-in — will retry", false}));
    EXPECT_EQ(content().substitute, "Rate limited — waiting before the next refresh");
    state->lastError.reset();
    EXPECT_EQ(content().substitute, "");
    EXPECT_NE(content().note, std::nullopt);
}

TEST_F(AccountSectionContentTest, theSameSentenceIsNotSaidTwice)
{
    state = test::failed(Kind::noService);
    state->revival = RevivalStatus::needsSignIn;
    EXPECT_EQ(content().substitute, "Sign in to this account in Claude Code");
    EXPECT_EQ(content().note, std::nullopt);
}

TEST_F(AccountSectionContentTest, namesStayAsTheyAre)
{
    const std::string names[] = {
        "<b>bold</b> & \"quoted\"", "line\nfeed", "",
        std::string(300, 'x'),      "\u202Eevil", "👩‍👩‍👧‍👦"};
    for (const std::string& name : names) {
        account.displayName = name;
        account.plan = name;
        EXPECT_EQ(content().name, name);
        EXPECT_EQ(content().plan, name);
        EXPECT_EQ(content().historyHelp, "History for " + name);
        LimitWindow scoped = window("weekly_scoped", 1);
        scoped.scope = name.empty() ? std::nullopt : std::optional(name);
        EXPECT_EQ(row(scoped).title, name.empty() ? "Weekly (scoped)" : "Weekly (" + name + ")");
    }
}

TEST_F(AccountSectionContentTest, withoutHistoryAndAnchorsItGoesByTheReadingAlone)
{
    state = test::read({window("weekly_all", 42, noon + hours(84)), window("weekly_all", 0)});
    const AccountSectionInput bare{account, &*state};
    EXPECT_EQ(accountSectionContent(bare, noon, [](Instant) { return ""; }), content());
}

} // namespace
} // namespace vellumor::accountSectionContentTest
