#include "ui/model/PopoverContent.h"

#include "app/state/AppStateTesting.h"

#include <cmath>

namespace vellumor::popoverContentTest {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

struct PopoverContentTest : test::AppStateTesting {
    [[nodiscard]] PopoverContent content() const
    {
        return PopoverContent::of(state, clock.now(), [](Instant) { return "TIME"; });
    }
    [[nodiscard]] test::Names shown() const
    {
        test::Names names;
        for (const AccountSectionContent& section : content().sections)
            names.push_back(section.name);
        return names;
    }
    void fetchOf(const std::string& name, std::vector<std::chrono::seconds> resets = {})
    {
        FetchOutcome outcome = read(UsageSource::endpoint);
        for (std::size_t i = 0; i < resets.size(); ++i)
            outcome.usage->windows[i].resetsAt = clock.now() + resets[i];
        applyTo(name, outcome);
    }
};

TEST_F(PopoverContentTest, withoutATrackedAccountItSaysWhatToDo)
{
    PopoverContent empty;
    empty.hint = "Run Claude Code to sign in, then scan for accounts.";
    empty.hintLink = "How to sign in to Claude Code";
    empty.footer = "Updating";
    EXPECT_EQ(content(), empty);
    add("ada");
    rescan();
    EXPECT_EQ(content().hint, "");
    EXPECT_EQ(content().hintLink, "");
    state.setTracked(id("ada"), false);
    EXPECT_EQ(content(), empty);
}

TEST_F(PopoverContentTest, theTrackedAccountsStandInTheUsersOrder)
{
    addAll({"ada", "bob", "cleo"});
    rescan();
    EXPECT_EQ(shown(), (test::Names{"ada", "bob", "cleo"}));
    state.reorder({2}, 0);
    EXPECT_EQ(shown(), (test::Names{"cleo", "ada", "bob"}));
    state.setTracked(id("ada"), false);
    EXPECT_EQ(shown(), (test::Names{"cleo", "bob"}));
}

TEST_F(PopoverContentTest, eachSectionShowsWhatIsKnownOfItsAccount)
{
    addAll({"ada", "bob"});
    rescan();
    const std::string dir = dirOf("ada");
    Usage before = test::reading(39, clock.now() - seconds(60));
    before.windows[1].resetsAt = clock.now() + std::chrono::hours(27);
    ResetAnchorStore(files, folders.vellumor() + "/reset-anchors.json").record(before, dir);
    rescan();
    fetchOf("ada", {seconds(7200)});
    const auto sections = content().sections;
    ASSERT_EQ(sections.size(), 2U);
    EXPECT_EQ(sections[0].configDir, dir);
    ASSERT_EQ(sections[0].rows.size(), 3U);
    EXPECT_EQ(sections[0].rows[0].resetText, "2h 0m");
    EXPECT_EQ(sections[0].rows[1].resetText, "1d 3h"); // from its anchor
    EXPECT_EQ(sections[0].rows[2].resetText, "");
    EXPECT_EQ(sections[1].configDir, dirOf("bob"));
    EXPECT_TRUE(sections[1].rows.empty());
}

TEST_F(PopoverContentTest, theForecastKnowsTheHistory)
{
    add("ada");
    rescan();
    const std::string dir = dirOf("ada");
    UsageHistoryStore history(files, folders.vellumor() + "/history");
    for (int i = 12; i >= 0; --i) {
        Usage climbing = test::reading(1, clock.now() - std::chrono::minutes(5 * i));
        climbing.windows[1].percent = 42 - i;
        history.append(climbing, dir, climbing.fetchedAt);
    }
    FetchOutcome outcome = read(UsageSource::endpoint);
    outcome.usage->windows[1].percent = 42;
    outcome.usage->windows[1].resetsAt = clock.now() + std::chrono::hours(84);
    applyTo("ada", outcome);
    EXPECT_EQ(content().sections[0].forecast, "↗ Weekly on pace for ~85% by reset");
    rescan(); // which reads the history
    applyTo("ada", outcome);
    EXPECT_NE(content().sections[0].forecast.find("on pace to hit the limit"), std::string::npos)
        << content().sections[0].forecast;
}

TEST_F(PopoverContentTest, newAccountsAreToldUntilTheNoticeIsDismissed)
{
    rescan(); // the first one only seeds
    add("ada");
    rescan();
    EXPECT_EQ(content().notice, "New account discovered · ada");
    add("bob");
    rescan();
    EXPECT_EQ(content().notice, "2 new accounts discovered · ada, bob");
    state.dismissNewAccounts();
    EXPECT_EQ(content().notice, "");
}

TEST_F(PopoverContentTest, theFooterTellsTheAgeAndARaisedInterval)
{
    const struct {
        std::optional<double> age;
        double effective;
        double chosen;
        const char* text;
    } rows[] = {
        {std::nullopt, 240, 120, "Updating"},
        {0, 120, 120, "Updated just now"},
        {-600, 120, 120, "Updated just now"},
        {59, 120, 120, "Updated just now"},
        {60, 120, 120, "Updated 1m ago"},
        {121, 120, 120, "Updated 2m ago"},
        {121, 240, 120, "Updated 2m ago · refreshing every ~4 min"},
        {7200, 240, 239, "Updated 2h ago · refreshing every ~4 min"},
        {200000, 60, 300, "Updated 2d ago"},
    };
    for (const auto& [age, effective, chosen, text] : rows) {
        const auto at = age ? std::optional(clock.now() - milliseconds(std::llround(*age * 1000)))
                            : std::nullopt;
        EXPECT_EQ(PopoverContent::footerText(at, clock.now(), effective, chosen), text);
    }
}

TEST_F(PopoverContentTest, theFooterGoesByTheOldestReadingAndTheIntervalsThatHold)
{
    addAll({"ada", "bob", "cleo"});
    rescan();
    EXPECT_EQ(content().footer, "Updating");
    fetchOf("ada");
    clock.advance(seconds(180));
    fetchOf("bob");
    state.recomputeEffectiveInterval(clock.now());
    EXPECT_EQ(content().footer, "Updated 3m ago · refreshing every ~3 min");
    state.setUserInterval(600);
    EXPECT_EQ(content().footer, "Updated 3m ago");
}

// What differs between the contents of two moments, in words.
std::string difference(const PopoverContent& before, const PopoverContent& after)
{
    std::string text = before.footer == after.footer ? "" : "footer " + after.footer + "; ";
    for (std::size_t i = 0; i < before.sections.size(); ++i) {
        AccountSectionContent a = before.sections[i];
        AccountSectionContent b = after.sections[i];
        for (std::size_t r = 0; r < a.rows.size(); ++r) {
            if (a.rows[r].resetText != b.rows[r].resetText)
                text += "reset " + b.rows[r].resetText + "; ";
            if (a.rows[r].isStale != b.rows[r].isStale)
                text += "stale; ";
            a.rows[r] = b.rows[r] = {};
        }
        if (a.note != b.note)
            text += "note " + b.note.value_or(NoteContent{}).text + "; ";
        a.note = b.note;
        a.forecast = b.forecast;
        text += a == b ? "" : "else; ";
    }
    return text;
}

TEST_F(PopoverContentTest, aSecondChangesWhatCountsTimeAndFetchesNothing)
{
    add("ada");
    rescan();
    fetchOf("ada", {seconds(7200), seconds(180000)});
    const auto began = clock.now();
    const auto contentAt = [&](int second) {
        return PopoverContent::of(state, began + seconds(second), [](Instant) { return "TIME"; });
    };
    const struct {
        int second; // compared with the one before it
        const char* changes;
    } rows[] = {
        {1, "reset 1h 59m; reset 2d 1h; "},
        {2, ""},
        {30, ""},
        {59, ""},
        {60, "footer Updated 1m ago; "},
        {61, "reset 1h 58m; "},
        {120, "footer Updated 2m ago; "},
        {300, "footer Updated 5m ago; "},
        {301, "reset 1h 54m; stale; stale; stale; note Showing last update; "},
        {3601, "reset 59m; reset 2d 0h; "},
        {7200, "footer Updated 2h ago; reset now; "},
        {7201, "reset 1d 23h; "},
    };
    for (const auto& [second, changes] : rows)
        EXPECT_EQ(difference(contentAt(second - 1), contentAt(second)), changes) << second;
    settle();
    EXPECT_EQ(calls(), 0);
}

} // namespace
} // namespace vellumor::popoverContentTest
