#include "ui/model/settings/NotificationsContent.h"

#include "app/state/AppStateTesting.h"

namespace vellumor::notificationsContentTest {
namespace {

using Custom = std::vector<NotificationsContent::CustomThreshold>;

struct NotificationsContentTest : test::AppStateTesting {
    [[nodiscard]] Custom custom() const { return NotificationsContent::of(state).custom; }
};

TEST(SessionClosingChoice, aStoredLeadTimeTakesItsPlaceAmongThePresets)
{
    const std::pair<int, std::vector<int>> table[] = {
        {15, {15, 30, 60, 90}},       {30, {15, 30, 60, 90}},     {60, {15, 30, 60, 90}},
        {90, {15, 30, 60, 90}},       {45, {15, 30, 45, 60, 90}}, {5, {5, 15, 30, 60, 90}},
        {120, {15, 30, 60, 90, 120}},
    };
    for (const auto& [stored, options] : table)
        EXPECT_EQ(SessionClosingChoice::options(stored), options) << stored;
}

TEST(SessionClosingChoice, aLeadTimeIsInMinutes)
{
    EXPECT_EQ(SessionClosingChoice::text(30), "30 min");
    EXPECT_EQ(SessionClosingChoice::text(5), "5 min");
}

TEST(NotificationsContent, theTableHasTwoRowsOfThreeSwitchesAndEachItsOwn)
{
    using P = Preferences;
    using Content = NotificationsContent;
    EXPECT_STREQ(Content::thresholdColumns[0], "At 50%");
    EXPECT_STREQ(Content::thresholdColumns[1], "At 90%");
    EXPECT_STREQ(Content::thresholdColumns[2], "Limit reached");
    EXPECT_STREQ(Content::thresholdRows[0].title, "Session");
    EXPECT_STREQ(Content::thresholdRows[1].title, "Weekly");
    const std::array<Content::Switch, 3> session = {&P::notifySession50, &P::notifySession90,
                                                    &P::notifySessionLimit};
    const std::array<Content::Switch, 3> weekly = {&P::notifyWeekly50, &P::notifyWeekly90,
                                                   &P::notifyWeeklyLimit};
    EXPECT_EQ(Content::thresholdRows[0].switches, session);
    EXPECT_EQ(Content::thresholdRows[1].switches, weekly);
    EXPECT_STREQ(Content::thresholdNote,
                 "Weekly covers every weekly window, including model-scoped ones.");
}

TEST(NotificationsContent, theOtherEventsAndTheirSwitches)
{
    struct Row {
        const char* title;
        const char* help;
        NotificationsContent::Switch field;
    };
    const Row table[] = {
        {"Usage window resets", "When a session or weekly window resets and usage returns to zero.",
         &Preferences::notifyQuotaReset},
        {"On pace to hit a weekly window limit", "Based on your current burn rate.",
         &Preferences::notifyProjectedWeekly},
        {"On pace to hit a session window limit", "Based on your current burn rate.",
         &Preferences::notifyProjectedSession},
        {"Spending usage credits", "", &Preferences::notifyCreditBurn},
    };
    ASSERT_EQ(NotificationsContent::events.size(), std::size(table));
    for (std::size_t i = 0; i < std::size(table); ++i) {
        EXPECT_STREQ(NotificationsContent::events[i].title, table[i].title);
        EXPECT_STREQ(NotificationsContent::events[i].help, table[i].help);
        EXPECT_EQ(NotificationsContent::events[i].field, table[i].field);
    }
    EXPECT_STREQ(NotificationsContent::sessionClosing.title, "Session window closes soon");
    EXPECT_EQ(NotificationsContent::sessionClosing.field, &Preferences::notifySessionClosing);
}

TEST_F(NotificationsContentTest, everyTrackedAccountMayHaveAThresholdOfItsOwn)
{
    addAll({"ada", "ben", "cyd"});
    rescan();
    state.setTracked(id("ben"), false);
    state.reorder({2}, 0);
    EXPECT_EQ(custom(), (Custom{{id("cyd"), "cyd", {}}, {id("ada"), "ada", {}}}));
    state.updatePreferences([this](Preferences& p) {
        p.customThresholds = {{id("ada"), 60.0}, {id("ben"), 10.0}};
    });
    EXPECT_EQ(custom(), (Custom{{id("cyd"), "cyd", {}}, {id("ada"), "ada", 60.0}}));
}

TEST_F(NotificationsContentTest, aLeadTimeOfAnOlderFileIsOffered)
{
    EXPECT_EQ(NotificationsContent::of(state).leads, (std::vector<int>{15, 30, 60, 90}));
    state.updatePreferences([](Preferences& p) { p.sessionClosingLeadMinutes = 45; });
    const auto content = NotificationsContent::of(state);
    EXPECT_EQ(content.leads, (std::vector<int>{15, 30, 45, 60, 90}));
    EXPECT_EQ(content.preferences.sessionClosingLeadMinutes, 45);
}

} // namespace
} // namespace vellumor::notificationsContentTest
