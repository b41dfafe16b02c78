#include "history/WeeklyReceipt.h"

#include "support/FakeClock.h"
#include "support/ScopedZone.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

namespace vellumor::weeklyReceiptTest {

using test::instant;
using test::ScopedZone;

namespace {

using namespace std::chrono_literals;
using Weeks = std::vector<TimeSpan>;

constexpr std::chrono::seconds week(604800);

const Instant reset = instant("2026-11-21T09:30:00.125Z");
const AnchorsByKind anchored = {{"weekly_all", {reset, false}}};
const TimeSpan past{reset - week, reset};

UsageSample weekly(Instant at, double percent = 50)
{
    return {at, {{"weekly_all", percent}}};
}

UsageSamples samplesAt(const std::vector<Instant>& moments)
{
    UsageSamples samples;
    for (const Instant moment : moments)
        samples.push_back(weekly(moment));
    return samples;
}

TimeSpan weekTo(Instant end)
{
    return {end - week, end};
}

WeeklyReceipt receipt(double coverage, std::vector<WeeklyReceipt::WindowFacts> windows)
{
    return {past.start, past.end, coverage, 3, std::move(windows), reset};
}

std::string fixedTime(Instant)
{
    return "4:30 PM";
}

} // namespace

TEST(WeeklyReceipt, theWeeklyFamilyIsToldByTheKind)
{
    const std::pair<const char*, bool> rows[] = {
        {"weekly_all", true},        {"seven_day", true}, {"seven_day_opus", true},
        {"seven_dayish", true},      {"session", false},  {"weekly_scoped", false},
        {"weekly_all_x", false},     {"weekly", false},   {"Seven_day", false},
        {"a_seven_day_opus", false}, {"", false},
    };
    for (const auto& [kind, isWeekly] : rows)
        EXPECT_EQ(isWeeklyKind(kind), isWeekly) << kind;
}

TEST(WeeklyReceipt, theWeekIsThatOfAllModelsOrElseOfTheFirstOfItsFamily)
{
    const ResetAnchor a{reset, false};
    const ResetAnchor b{reset + 1h, true};
    const ResetAnchor c{reset + 2h, false};
    const std::pair<AnchorsByKind, std::optional<ResetAnchor>> rows[] = {
        {{}, std::nullopt},
        {{{"session", a}, {"weekly_scoped", b}}, std::nullopt},
        {{{"weekly_all", a}}, a},
        {{{"seven_day_opus", b}, {"weekly_all", a}, {"seven_day", c}}, a},
        {{{"seven_day_sonnet", a}, {"seven_day_opus", b}}, b},
        {{{"seven_day_opus", b}, {"seven_day", c}}, c},
        {{{"session", a}, {"weekly_scoped", a}, {"seven_day_opus", b}, {"zzz", a}}, b},
    };
    for (const auto& [anchors, expected] : rows)
        EXPECT_EQ(WeeklyReceipt::weeklyAnchor(anchors), expected);
}

TEST(WeeklyReceipt, withoutAWeeklyAnchorOrSamplesNoWeekIsDue)
{
    const auto samples = samplesAt({reset - 20 * week, reset - 1h});
    EXPECT_EQ(WeeklyReceipt::completedWeeks({}, {}, samples, reset), Weeks());
    EXPECT_EQ(WeeklyReceipt::completedWeeks({{"session", {reset, false}}}, {}, samples, reset),
              Weeks());
    EXPECT_EQ(WeeklyReceipt::completedWeeks(anchored, {}, {}, reset), Weeks());
}

TEST(WeeklyReceipt, aWeekIsCompletedAtItsEndAndNotBefore)
{
    const auto samples = samplesAt({reset - 1h});
    const std::pair<std::chrono::microseconds, Weeks> rows[] = {
        {-1us, {}}, {0us, {past}}, {1us, {past}}, {week - 1us, {past}}, {week, {past}},
    };
    for (const auto& [after, weeks] : rows) {
        SCOPED_TRACE(after.count());
        for (const int periods : {-60, -1, 0, 1, 60}) { // wherever the anchor stands
            const AnchorsByKind anchors = {{"weekly_all", {reset + periods * week, false}}};
            EXPECT_EQ(WeeklyReceipt::completedWeeks(anchors, {}, samples, reset + after), weeks);
        }
    }
}

TEST(WeeklyReceipt, anAnchorOffTheCadenceServesAsWell)
{
    EXPECT_EQ(WeeklyReceipt::completedWeeks({{"weekly_all", {reset, true}}}, {},
                                            samplesAt({reset - 1h}), reset),
              Weeks{past});
}

TEST(WeeklyReceipt, aSampleOfTheStartMakesAWeekDueAndOneOfTheEndDoesNot)
{
    const auto due = [](Instant at) {
        return WeeklyReceipt::completedWeeks(anchored, {}, samplesAt({at}), reset);
    };
    EXPECT_EQ(due(reset), Weeks());
    EXPECT_EQ(due(reset - 1us), Weeks{past});
    EXPECT_EQ(due(reset - week), Weeks{past});
    EXPECT_EQ(due(reset - week - 1us), Weeks{weekTo(reset - week)});
    EXPECT_EQ(due(reset + 1h), Weeks());
    // Of the end, beside an older one: the week is looked at and has nothing.
    EXPECT_EQ(
        WeeklyReceipt::completedWeeks(anchored, {}, samplesAt({reset, reset - 10 * 24h}), reset),
        Weeks{weekTo(reset - week)});
}

TEST(WeeklyReceipt, whatIsArchivedEndsTheWalk)
{
    const auto samples = samplesAt({reset - 15 * 24h, reset - 8 * 24h, reset - 1h});
    const Weeks all = {weekTo(reset - 2 * week), weekTo(reset - week), past};
    const std::pair<std::optional<Instant>, Weeks> rows[] = {
        {std::nullopt, all},
        {reset, {}},
        {reset + 1us, {}},
        {reset - 1us, {past}},
        {reset - week, {past}},
        {reset - week - 1us, {all[1], past}},
        {reset - 2 * week, {all[1], past}},
        {reset - 50 * week, all},
        {reset - 90s, {past}}, // the reset has moved since, and the week is due once more
    };
    for (const auto& [archived, weeks] : rows)
        EXPECT_EQ(WeeklyReceipt::completedWeeks(anchored, archived, samples, reset), weeks)
            << (archived ? Format::isoFractional(*archived) : "none");
}

TEST(WeeklyReceipt, aWeekWithoutSamplesIsPassedOverAndTheOlderOnesAreLookedAt)
{
    const auto samples = samplesAt({reset - 22 * 24h, reset - 1h});
    EXPECT_EQ(WeeklyReceipt::completedWeeks(anchored, {}, samples, reset),
              (Weeks{weekTo(reset - 3 * week), past}));
}

TEST(WeeklyReceipt, theWalkEndsAfterTwelveWeeks)
{
    const auto twelfth = samplesAt({reset - 12 * week});
    EXPECT_EQ(WeeklyReceipt::completedWeeks(anchored, {}, twelfth, reset),
              Weeks{weekTo(reset - 11 * week)});
    const auto thirteenth = samplesAt({reset - 12 * week - 1us});
    EXPECT_EQ(WeeklyReceipt::completedWeeks(anchored, {}, thirteenth, reset), Weeks());
    UsageSamples daily;
    for (int day = 0; day < 200; ++day)
        daily.push_back(weekly(reset - 24h * day));
    const auto weeks = WeeklyReceipt::completedWeeks(anchored, {}, daily, reset);
    ASSERT_EQ(weeks.size(), 12U);
    EXPECT_EQ(weeks.front(), weekTo(reset - 11 * week));
    EXPECT_EQ(weeks.back(), past);
}

// Against a model that asks of each of many weeks whether it is due.
TEST(WeeklyReceipt, completedWeeksAreThoseOfAPlainModel)
{
    constexpr std::int64_t length = 604800;
    std::mt19937_64 random(20261121);
    const auto below = [&](std::int64_t limit) {
        return static_cast<std::int64_t>(random() % static_cast<std::uint64_t>(limit));
    };
    const auto at = [](std::int64_t second) { return Instant(std::chrono::seconds(second)); };
    for (int round = 0; round < 5000; ++round) {
        SCOPED_TRACE(round);
        const std::int64_t now = 2'000'000'000;
        // Often exactly on the cadence, or a second beside it.
        const std::int64_t anchor =
            now + (below(41) - 20) * length + (below(2) == 0 ? below(3) - 1 : below(length));
        std::vector<std::int64_t> moments(static_cast<std::size_t>(below(8)));
        for (auto& moment : moments)
            moment = below(2) == 0 ? now - below(16 * length)
                                   : anchor + (below(61) - 40) * length + below(3) - 1;
        UsageSamples samples;
        for (const std::int64_t moment : moments)
            samples.push_back(weekly(at(moment)));
        std::optional<std::int64_t> archived;
        if (below(2) == 0)
            archived = anchor + (below(61) - 40) * length + below(3) - 1;

        Weeks expected;
        for (std::int64_t end = anchor - 100 * length; end <= now; end += length) {
            const auto isWithin = [&](std::int64_t moment) {
                return moment >= end - length && moment < end;
            };
            if (now - end < 12 * length && (!archived || end > *archived) &&
                std::ranges::any_of(moments, isWithin))
                expected.push_back(weekTo(at(end)));
        }
        std::optional<Instant> archivedEnd;
        if (archived)
            archivedEnd = at(*archived);
        ASSERT_EQ(WeeklyReceipt::completedWeeks({{"weekly_all", {at(anchor), false}}}, archivedEnd,
                                                samples, at(now)),
                  expected);
    }
}

TEST(WeeklyReceipt, aWeekWithoutSamplesHasNoReceipt)
{
    EXPECT_EQ(WeeklyReceipt::assemble({}, past, reset), std::nullopt);
    EXPECT_EQ(WeeklyReceipt::assemble(samplesAt({past.start - 1us, past.end + 1us}), past, reset),
              std::nullopt);
}

TEST(WeeklyReceipt, aReceiptHoldsWhatTheWeekShowed)
{
    const Instant day = reset - 4 * 24h;
    const UsageSamples samples = {
        {day, {{"session", 10}, {"weekly_all", 40}}},
        {day + 1h, {{"session", 80}, {"weekly_all", 41}}},
        {day + 2h, {{"session", 5}, {"weekly_all", 40.5}, {"seven_day_opus", 7}}},
        {day + 3h, {}},
        {day + 4h, {{"session", 80}, {"weekly_all", 41}, {"seven_day_opus", 7}}},
    };
    const WeeklyReceipt expected = {past.start,
                                    past.end,
                                    100.0 * 4 / 168,
                                    5,
                                    {{"session", 80, day + 1h, 1},
                                     {"seven_day_opus", 7, day + 2h, 0},
                                     {"weekly_all", 41, day + 1h, 0}},
                                    reset + 5min};
    const auto assembled = WeeklyReceipt::assemble(samples, past, reset + 5min);
    ASSERT_TRUE(assembled);
    EXPECT_NEAR(assembled->coveragePercent, expected.coveragePercent, 1e-12);
    WeeklyReceipt compared = *assembled;
    compared.coveragePercent = expected.coveragePercent;
    EXPECT_EQ(compared, expected);
}

TEST(WeeklyReceipt, bothBoundsOfTheWeekCountAndNothingBeyondDoes)
{
    const UsageSamples samples = {weekly(past.start - 1h, 90), weekly(past.start, 10),
                                  weekly(past.start + 1h, 20), weekly(past.end - 1h, 30),
                                  weekly(past.end, 5),         weekly(past.end + 1h, 99)};
    const auto assembled = WeeklyReceipt::assemble(samples, past, reset);
    ASSERT_TRUE(assembled);
    EXPECT_EQ(assembled->sampleCount, 4);
    // The fall from before the week is not of the week; the one at its end is.
    EXPECT_EQ(assembled->windows,
              (std::vector<WeeklyReceipt::WindowFacts>{{"weekly_all", 30, past.end - 1h, 1}}));
}

TEST(WeeklyReceipt, coverageCountsWhatReachesOverTheEdges)
{
    const UsageSamples samples = {weekly(past.start - 2h), weekly(past.start + 2h),
                                  weekly(past.start + 6h), weekly(past.end - 1h),
                                  weekly(past.end + 3h)};
    const auto assembled = WeeklyReceipt::assemble(samples, past, reset);
    ASSERT_TRUE(assembled);
    EXPECT_EQ(assembled->sampleCount, 3);
    EXPECT_NEAR(assembled->coveragePercent, 100.0 * 7 / 168, 1e-12);
    EXPECT_EQ(WeeklyReceipt::assemble(samplesAt({reset - 1h}), past, reset)->coveragePercent, 0.0);
}

TEST(WeeklyReceipt, theSessionStandsFirstAndTheOthersByTheirKind)
{
    const UsageSamples samples = {{reset - 2h, {{"weekly_all", 1}, {"a", 2}, {"Z", 2}}},
                                  {reset - 1h, {{"seven_day_opus", 3}, {"session", 4}}}};
    const auto assembled = WeeklyReceipt::assemble(samples, past, reset);
    ASSERT_TRUE(assembled);
    std::vector<std::string> kinds;
    for (const auto& facts : assembled->windows)
        kinds.push_back(facts.kind);
    EXPECT_EQ(kinds,
              (std::vector<std::string>{"session", "Z", "a", "seven_day_opus", "weekly_all"}));
    EXPECT_TRUE(WeeklyReceipt::assemble({{reset - 1h, {}}}, past, reset)->windows.empty());
}

TEST(WeeklyReceipt, theSummaryIsALineForTheWeekItsCoverageAndEachLimit)
{
    const ScopedZone utc("UTC");
    const Instant friday = instant("2026-11-20T16:30:00Z");
    EXPECT_EQ(receipt(87.4, {{"session", 92.5, friday, 12},
                             {"seven_day_opus", 7.4, friday - 24h, 1},
                             {"weekly_all", 100, friday + 14h, 0}})
                  .summaryText("Work", fixedTime),
              "Work — week Nov 14 – Nov 21\n"
              "Watched ~87% of the week\n"
              "Session: Peak 93% · Fri 4:30 PM · At least 12 resets seen\n"
              "Weekly (Opus): Peak 7% · Thu 4:30 PM · At least 1 reset seen\n"
              "Weekly: Peak 100% · Sat 4:30 PM");
    EXPECT_EQ(receipt(0, {}).summaryText("", fixedTime),
              " — week Nov 14 – Nov 21\nWatched ~0% of the week");
}

TEST(WeeklyReceipt, theSummaryIsInTheZoneOfTheReader)
{
    const ScopedZone zone("America/Los_Angeles");
    const Instant moment = instant("2026-11-20T07:59:00Z"); // Thursday there
    EXPECT_EQ(WeeklyReceipt::windowLine({"weekly_all", 3, moment, 0}, fixedTime),
              "Weekly: Peak 3% · Thu 4:30 PM");
    WeeklyReceipt early = receipt(50, {});
    early.weekStart = instant("2026-11-14T07:59:00Z");
    early.weekEnd = instant("2026-11-21T08:00:00Z");
    EXPECT_EQ(early.summaryText("Work", fixedTime),
              "Work — week Nov 13 – Nov 21\nWatched ~50% of the week");
}

TEST(WeeklyReceipt, weeksAreComparedWhenTheyWereWatchedAlike)
{
    const auto compared = [](double latest, double previous) {
        const auto line =
            WeeklyReceipt::comparisonLine(receipt(latest, {{"weekly_all", 92.5, reset, 0}}),
                                          receipt(previous, {{"weekly_all", 71.4, reset, 0}}));
        return line.value_or("none");
    };
    const std::string line = "Weekly peak 93% vs 71% the week before";
    const std::tuple<double, double, std::string> rows[] = {
        {40, 40, line},   {40, 55, line},   {55, 40, line},     {40, 55.01, "none"},
        {40, 56, "none"}, {56, 40, "none"}, {40.5, 55.5, line}, {0, 100, "none"},
    };
    for (const auto& [latest, previous, expected] : rows)
        EXPECT_EQ(compared(latest, previous), expected) << latest << " and " << previous;
}

TEST(WeeklyReceipt, theMainWeeklyLimitsAreComparedIfTheyAreTheSame)
{
    const WeeklyReceipt::WindowFacts session{"session", 1, reset, 0};
    const WeeklyReceipt::WindowFacts all{"weekly_all", 50, reset, 0};
    const WeeklyReceipt::WindowFacts opus{"seven_day_opus", 20, reset, 0};
    const WeeklyReceipt::WindowFacts sonnet{"seven_day_sonnet", 30, reset, 0};
    using Windows = std::vector<WeeklyReceipt::WindowFacts>;
    const std::tuple<Windows, Windows, std::string> rows[] = {
        {{session, opus, all}, {opus, all}, "Weekly peak 50% vs 50% the week before"},
        {{session, opus, sonnet}, {opus}, "Weekly (Opus) peak 20% vs 20% the week before"},
        {{sonnet, opus}, {session, sonnet}, "Weekly (Sonnet) peak 30% vs 30% the week before"},
        {{opus, all}, {opus}, "none"},
        {{opus}, {opus, all}, "none"},
        {{opus}, {sonnet}, "none"},
        {{session}, {session}, "none"},
        {{}, {all}, "none"},
        {{all}, {}, "none"},
    };
    for (const auto& [latest, previous, line] : rows)
        EXPECT_EQ(WeeklyReceipt::comparisonLine(receipt(80, latest), receipt(80, previous))
                      .value_or("none"),
                  line);
}

} // namespace vellumor::weeklyReceiptTest
