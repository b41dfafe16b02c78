#include "ui/model/settings/UsageContent.h"

#include "app/state/AppStateTesting.h"

namespace vellumor::usageContentTest {
namespace {

using test::Names;

struct UsageContentTest : test::AppStateTesting {
    [[nodiscard]] Names intervals() const
    {
        Names texts;
        for (const auto& choice : UsageContent::of(state).intervals)
            texts.push_back(choice.text);
        return texts;
    }
    // As at the start, and before each fetch.
    void scan()
    {
        rescan();
        state.recomputeEffectiveInterval(clock.now());
    }
    [[nodiscard]] std::string chosen() const
    {
        const auto content = UsageContent::of(state);
        return content.intervals.at(content.interval).text;
    }
};

TEST(UsageContent, intervalsAreSpelledForPeople)
{
    const std::pair<double, const char*> table[] = {
        {60, "~1 minute"},     {59.5, "~1 minute"},   {60.4, "~1 minute"},
        {120, "~2 minutes"},   {119.5, "~2 minutes"}, {120.4, "~2 minutes"},
        {300, "~5 minutes"},   {600, "~10 minutes"},  {900, "~15 minutes"},
        {1800, "~30 minutes"}, {3600, "~60 minutes"}, {90, "~1 min 30s"},
        {90.4, "~1 min 30s"},  {119.4, "~1 min 59s"}, {61, "~1 min 1s"},
        {59.4, "~59s"},        {45, "~45s"},          {0, "~0s"},
    };
    for (const auto& [seconds, text] : table)
        EXPECT_EQ(UsageContent::spelledInterval(seconds), text) << seconds;
}

TEST(UsageContent, theEffectiveNoteTellsWhoIsRefreshedAndHowOften)
{
    struct Row {
        std::size_t pollable;
        std::size_t tracked;
        double interval;
        const char* text;
    };
    const Row table[] = {
        {1, 1, 120, "Usage of your tracked account refreshes every ~2 minutes."},
        {1, 2, 120, "Usage of your active account refreshes every ~2 minutes."},
        {2, 2, 60, "Usage of each of your 2 tracked accounts refreshes every ~1 minute."},
        {2, 3, 90, "Usage of each of your 2 active accounts refreshes every ~1 min 30s."},
        {5, 5, 300, "Usage of each of your 5 tracked accounts refreshes every ~5 minutes."},
        {0, 0, 120, "No accounts are currently refreshing — none has a readable sign-in."},
        {0, 3, 1800, "No accounts are currently refreshing — none has a readable sign-in."},
    };
    for (const Row& row : table)
        EXPECT_EQ(UsageContent::effective(row.pollable, row.tracked, row.interval), row.text);
}

TEST_F(UsageContentTest, sixIntervalsAreOffered)
{
    EXPECT_EQ(intervals(), (Names{"~1 minute", "~2 minutes", "~5 minutes", "~10 minutes",
                                  "~15 minutes", "~30 minutes"}));
    EXPECT_EQ(chosen(), "~2 minutes");
    for (const double seconds : {60.0, 300.0, 600.0, 900.0, 1800.0}) {
        state.setUserInterval(seconds);
        EXPECT_EQ(intervals().size(), 6U);
        EXPECT_EQ(chosen(), UsageContent::spelledInterval(seconds));
    }
}

TEST_F(UsageContentTest, anIntervalThatIsNoneOfThemIsOfferedToo)
{
    state.setUserInterval(90);
    EXPECT_EQ(intervals(), (Names{"~1 minute", "~1 min 30s", "~2 minutes", "~5 minutes",
                                  "~10 minutes", "~15 minutes", "~30 minutes"}));
    EXPECT_EQ(chosen(), "~1 min 30s");
}

TEST_F(UsageContentTest, anIntervalOfAnOlderFileIsShownInTheNote)
{
    files.write(R"({"schemaVersion": 1, "userInterval": 90})", folders.vellumor() + "/older.json");
    const PreferencesStore older{files, folders.vellumor() + "/older.json", runAtOnce};
    add("ada");
    rescan();
    state.updatePreferences([&](Preferences& p) { p = older.current(); });
    EXPECT_EQ(UsageContent::of(state).effectiveNote,
              "Usage of your tracked account refreshes every ~1 min 30s.");
}

TEST_F(UsageContentTest, theIntervalTellsForHowManyAccountsItWillDo)
{
    const std::pair<double, const char*> table[] = {{60, "1"},  {90, "1"},  {119, "1"},
                                                    {120, "2"}, {300, "5"}, {1800, "30"}};
    for (const auto& [seconds, count] : table) {
        state.setUserInterval(seconds);
        EXPECT_EQ(UsageContent::of(state).designedNote,
                  std::string("Designed for up to ~") + count +
                      " accounts. If you add more, the refreshes will spread further apart.");
    }
}

TEST_F(UsageContentTest, theNoteFollowsTheAccounts)
{
    EXPECT_EQ(UsageContent::of(state).effectiveNote,
              "No accounts are currently refreshing — none has a readable sign-in.");
    addAll({"ada", "ben", "cyd"});
    scan();
    EXPECT_EQ(UsageContent::of(state).effectiveNote,
              "Usage of each of your 3 tracked accounts refreshes every ~3 minutes.");
    found.facts[0].tokenStatus = TokenStatus::signedOut;
    scan();
    EXPECT_EQ(UsageContent::of(state).effectiveNote,
              "Usage of each of your 2 active accounts refreshes every ~2 minutes.");
    state.setTracked(id("ada"), false);
    EXPECT_EQ(UsageContent::of(state).effectiveNote,
              "Usage of each of your 2 tracked accounts refreshes every ~2 minutes.");
}

TEST_F(UsageContentTest, switchesAndLocationAreThoseOfThePreferences)
{
    UsageContent content = UsageContent::of(state);
    EXPECT_FALSE(content.localCacheOnly);
    EXPECT_TRUE(content.tokenRevivalEnabled);
    EXPECT_EQ(content.claudeLocation, "automatic");
    EXPECT_FALSE(content.hasClaudePath);
    state.updatePreferences([](Preferences& p) {
        p.localCacheOnly = true;
        p.tokenRevivalEnabled = false;
        p.claudeBinaryPath = "/opt/claude";
    });
    content = UsageContent::of(state);
    EXPECT_TRUE(content.localCacheOnly);
    EXPECT_FALSE(content.tokenRevivalEnabled);
    EXPECT_EQ(content.claudeLocation, "/opt/claude");
    EXPECT_TRUE(content.hasClaudePath);
}

} // namespace
} // namespace vellumor::usageContentTest
