#include "ui/model/HistoryContent.h"

#include "support/FakeClock.h"
#include "support/ScopedZone.h"

#include <gtest/gtest.h>

namespace vellumor::historyContentTest {
namespace {

using std::chrono::hours;
using test::instant;
using test::ScopedZone;
using Texts = std::vector<std::string>;
using Facts = std::vector<HistoryFactRow>;
using Segments = std::vector<HistoryCoverage::Segment>;

const Instant now = instant("2026-11-21T12:00:00Z"); // a Saturday
const Instant weekAgo = instant("2026-11-14T12:00:00Z");

UsageSample weekly(Instant at, double percent)
{
    return {at, {{"weekly_all", percent}}};
}

HistoryContent of(const UsageSamples& history, const WeeklyReceipts& receipts = {},
                  const Usage* usage = nullptr)
{
    Account account;
    account.displayName = "ada";
    return HistoryContent::of(account, history, receipts, usage, now,
                              [](Instant) -> std::string { return "4:30 PM"; });
}

// "kind: title" of each chart.
Texts charts(const HistoryContent& content)
{
    Texts texts;
    for (const HistoryChartContent& chart : content.charts)
        texts.push_back(chart.kind + ": " + chart.title);
    return texts;
}

LimitWindow window(const std::string& kind, const std::string& group,
                   std::optional<std::string> scope = std::nullopt)
{
    LimitWindow made;
    made.kind = kind;
    made.group = group;
    made.scope = std::move(scope);
    return made;
}

WeeklyReceipt receipt(Instant end, double coverage, double peak, int resets = 0)
{
    const Instant start = end - hours(168);
    return {start,
            end,
            coverage,
            3,
            {{"session", 99, start + hours(1), 4}, {"weekly_all", peak, start + hours(24), resets}},
            end};
}

TEST(HistoryContent, everyWeeklyLimitOfTheReadingGetsAChart)
{
    const struct {
        LimitWindow window;
        Texts charts;
    } rows[] = {
        {window("session", "session"), {}},
        {window("session", "weekly"), {}},
        {window("weekly_all", "session"), {}},
        {window("mystery", ""), {}},
        {window("weekly_scoped", ""), {}},
        {window("weekly_scoped", "weekly", "Opus"), {"weekly_scoped: Weekly (Opus)"}},
        {window("weekly_all", ""), {"weekly_all: Weekly"}},
        {window("seven_day_opus", ""), {"seven_day_opus: Weekly (Opus)"}},
        {window("mystery", "weekly"), {"mystery: Mystery"}},
    };
    for (const auto& row : rows) {
        Usage usage;
        usage.windows = {row.window};
        EXPECT_EQ(charts(of({{now, {{"seven_day_cowork", 1}}}}, {}, &usage)), row.charts)
            << row.window.kind << " " << row.window.group;
    }
}

TEST(HistoryContent, theChartsStandInTheReadingsOrder)
{
    Usage usage;
    usage.windows = {window("session", "session"), window("weekly_all", "weekly"),
                     window("seven_day_opus", "weekly")};
    EXPECT_EQ(charts(of({}, {}, &usage)),
              (Texts{"weekly_all: Weekly", "seven_day_opus: Weekly (Opus)"}));
}

TEST(HistoryContent, withoutAReadingTheKindsOfTheHistoryDo)
{
    const UsageSamples history = {
        {now - hours(300), {{"weekly_all", 1}, {"session", 1}}},
        {now, {{"weekly_all", 2}, {"weekly_scoped", 1}, {"seven_day_opus", 3}, {"mystery", 4}}},
    };
    EXPECT_EQ(charts(of(history)), (Texts{"seven_day_opus: Weekly (Opus)", "weekly_all: Weekly"}));
}

TEST(HistoryContent, theChartBeginsSevenDaysBeforeNow)
{
    const auto content =
        of({weekly(weekAgo - hours(42), 90), weekly(weekAgo, 10), weekly(weekAgo + hours(42), 20),
            weekly(weekAgo + hours(84), 5), weekly(now, 30)});
    ASSERT_EQ(content.charts.size(), 1U);
    EXPECT_EQ(content.charts[0].segments,
              (std::vector<HistoryChart::Points>{{{0, 10}, {0.25, 20}, {0.5, 5}, {1, 30}}}));
    EXPECT_EQ(content.charts[0].resetTicks, (std::vector<double>{0, 0.5}));
}

TEST(HistoryContent, oneSampleIsTooLittleForALine)
{
    const auto content = of({weekly(now - hours(1), 40)});
    ASSERT_EQ(content.charts.size(), 1U);
    EXPECT_TRUE(content.charts[0].segments.empty());
    EXPECT_EQ(content.facts, (Facts{{"Weekly:", "Peak 40% · Sat 4:30 PM"}}));
}

TEST(HistoryContent, theDaysBeginWhereTheUserIs)
{
    const std::pair<const char*, double> rows[] = {
        {"UTC", 12.0 / 168}, {"Etc/GMT-6", 6.0 / 168}, {"Etc/GMT+6", 18.0 / 168}};
    for (const auto& [name, first] : rows) {
        const ScopedZone zone(name);
        const auto days = of({}).dayBoundaries;
        ASSERT_EQ(days.size(), 7U) << name;
        EXPECT_DOUBLE_EQ(days.front(), first) << name;
        EXPECT_DOUBLE_EQ(days.back(), first + 6.0 / 7) << name;
    }
}

TEST(HistoryContent, whatWasWatchedOfTheSevenDaysIsTold)
{
    const auto content = of({weekly(weekAgo, 1), weekly(weekAgo + hours(42), 2),
                             weekly(weekAgo + hours(84), 3), weekly(now + hours(42), 4)});
    EXPECT_EQ(content.strip, (Segments{{0, 0.5}}));
    EXPECT_EQ(content.coverage, "Watched ~50% of the last 7 days");
}

TEST(HistoryContent, aFactNamesThePeakAndTheResetsThatWereSeen)
{
    const ScopedZone zone("UTC");
    const UsageSamples history = {
        {weekAgo - hours(1), {{"weekly_all", 99}, {"seven_day_cowork", 99}}},
        {weekAgo + hours(1), {{"weekly_all", 60}, {"session", 90.5}, {"mystery", 7}}},
        {weekAgo + hours(24), {{"weekly_all", 2}, {"session", 3}, {"mystery", 1}}},
        {weekAgo + hours(48), {{"weekly_all", 60}, {"session", 1}, {"mystery", 0}}},
    };
    EXPECT_EQ(of(history).facts,
              (Facts{{"Mystery:", "Peak 7% · Sat 4:30 PM · At least 1 reset seen"},
                     {"Session:", "Peak 91% · Sat 4:30 PM"},
                     {"Weekly:", "Peak 60% · Sat 4:30 PM · At least 2 resets seen"}}));
}

TEST(HistoryContent, ofANewAccountIsSaidThatNothingIsKnown)
{
    Usage usage;
    usage.windows = {window("session", "session"), window("weekly_all", "weekly"),
                     window("seven_day_opus", "weekly")};
    const auto content = of({}, {}, &usage);
    EXPECT_EQ(content.name, "ada");
    ASSERT_EQ(content.charts.size(), 2U);
    for (const HistoryChartContent& chart : content.charts) {
        EXPECT_TRUE(chart.segments.empty());
        EXPECT_TRUE(chart.resetTicks.empty());
    }
    EXPECT_EQ(content.strip, Segments());
    EXPECT_EQ(content.coverage, "Watched ~0% of the last 7 days");
    EXPECT_EQ(content.facts, Facts());
    ReceiptContent none;
    none.title = "No weekly receipt yet — the first one is archived when a week rolls over.";
    EXPECT_EQ(content.receipt, none);
}

TEST(HistoryContent, theLastWeekIsToldInAFewLines)
{
    const ScopedZone zone("UTC");
    const auto told = of({}, {receipt(weekAgo, 62.5, 70.5, 1)}).receipt;
    EXPECT_EQ(told.title, "Last week · Nov 7 – Nov 14");
    EXPECT_EQ(told.coverage, "Watched ~63% of the week");
    EXPECT_EQ(told.rows, (Facts{{"Session:", "Peak 99% · Sat 4:30 PM · At least 4 resets seen"},
                                {"Weekly:", "Peak 71% · Sun 4:30 PM · At least 1 reset seen"}}));
    EXPECT_EQ(told.comparison, "");
    EXPECT_EQ(told.summary, "ada — week Nov 7 – Nov 14\n"
                            "Watched ~63% of the week\n"
                            "Session: Peak 99% · Sat 4:30 PM · At least 4 resets seen\n"
                            "Weekly: Peak 71% · Sun 4:30 PM · At least 1 reset seen");
}

TEST(HistoryContent, theLastWeekIsComparedWithTheOneBeforeAlone)
{
    const auto first = receipt(weekAgo - hours(336), 60, 11);
    const auto second = receipt(weekAgo - hours(168), 60, 22);
    const struct {
        WeeklyReceipts receipts;
        const char* comparison;
    } rows[] = {
        {{second}, ""},
        {{second, receipt(weekAgo, 60, 33)}, "Weekly peak 33% vs 22% the week before"},
        {{first, second, receipt(weekAgo, 60, 33)}, "Weekly peak 33% vs 22% the week before"},
        {{second, receipt(weekAgo, 45, 33)}, "Weekly peak 33% vs 22% the week before"},
        {{second, receipt(weekAgo, 30, 33)}, ""}, // watched too differently
        {{first, second, receipt(weekAgo, 76, 33)}, ""},
    };
    for (const auto& row : rows) {
        const auto told = of({}, row.receipts).receipt;
        EXPECT_EQ(told.comparison, row.comparison)
            << row.receipts.size() << " " << row.receipts.back().coveragePercent;
        EXPECT_EQ(told.summary.find("vs"), std::string::npos);
    }
}

} // namespace
} // namespace vellumor::historyContentTest
