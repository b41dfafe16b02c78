#include "ui/model/HistoryContent.h"

#include "history/HistoryFacts.h"

#include <set>
#include <string_view>
#include <utility>

namespace vellumor {

namespace {

bool isWeekly(const std::string& kind, const std::string& group)
{
    return kind != "session" && group != "session" && (group == "weekly" || isWeeklyKind(kind));
}

std::set<std::string> kindsOf(const UsageSamples& history)
{
    std::set<std::string> kinds;
    for (const UsageSample& sample : history) {
        for (const auto& [kind, percent] : sample.percents) {
            if (!kinds.contains(kind))
                kinds.insert(kind);
        }
    }
    return kinds;
}

// Kind and title of each limit that gets a chart.
std::vector<std::pair<std::string, std::string>> weeklyKinds(const Usage* usage,
                                                             const std::set<std::string>& kinds)
{
    std::vector<std::pair<std::string, std::string>> found;
    if (usage != nullptr) {
        for (const LimitWindow& window : usage->windows) {
            if (isWeekly(window.kind, window.group))
                found.emplace_back(window.kind, LimitWindow::title(window.kind, window.scope));
        }
        return found;
    }
    for (const std::string& kind : kinds) {
        if (isWeekly(kind, ""))
            found.emplace_back(kind, LimitWindow::title(kind, std::nullopt));
    }
    return found;
}

std::vector<HistoryFactRow> factRows(const UsageSamples& history,
                                     const std::set<std::string>& kinds, const TimeSpan& span,
                                     const ShortTime& shortTime)
{
    std::vector<HistoryFactRow> rows;
    for (const std::string& kind : kinds) {
        const auto peak = HistoryCoverage::peak(history, kind, span);
        if (!peak)
            continue;
        std::string text = HistoryFacts::peakPhrase(peak->percent, peak->at, shortTime);
        if (kind != "session") {
            if (const auto resets = HistoryFacts::resetsPhrase(
                    HistoryCoverage::observedResets(history, kind, span)))
                text += " · " + *resets;
        }
        rows.push_back({LimitWindow::title(kind, std::nullopt) + ":", std::move(text)});
    }
    return rows;
}

// Its line in the summary, in two columns.
HistoryFactRow receiptRow(const WeeklyReceipt::WindowFacts& facts, const ShortTime& shortTime)
{
    const std::string title = LimitWindow::title(facts.kind, std::nullopt) + ":";
    return {title, WeeklyReceipt::windowLine(facts, shortTime).substr(title.size() + 1)};
}

ReceiptContent receiptContent(const std::string& name, const WeeklyReceipts& receipts,
                              const ShortTime& shortTime)
{
    ReceiptContent content;
    if (receipts.empty()) {
        content.title = "No weekly receipt yet — the first one is archived when a week rolls over.";
        return content;
    }
    const WeeklyReceipt& latest = receipts.back();
    content.title = "Last week · " + HistoryFacts::weekSpan(latest.weekStart, latest.weekEnd);
    content.coverage = HistoryFacts::coverageLine(latest.coveragePercent / 100.0, "the week");
    for (const WeeklyReceipt::WindowFacts& facts : latest.windows)
        content.rows.push_back(receiptRow(facts, shortTime));
    if (receipts.size() > 1) {
        content.comparison =
            WeeklyReceipt::comparisonLine(latest, receipts[receipts.size() - 2]).value_or("");
    }
    content.summary = latest.summaryText(name, shortTime);
    return content;
}

} // namespace

HistoryContent HistoryContent::of(const Account& account, const UsageSamples& history,
                                  const WeeklyReceipts& receipts, const Usage* usage, Instant now,
                                  const ShortTime& shortTime)
{
    const TimeSpan shown{
        now - std::chrono::duration_cast<Instant::duration>(std::chrono::duration<double>(span)),
        now};
    const auto kinds = kindsOf(history);
    HistoryContent content;
    content.name = account.displayName;
    const auto weekly = weeklyKinds(usage, kinds);
    std::vector<std::string_view> names;
    names.reserve(weekly.size());
    for (const auto& [kind, title] : weekly)
        names.push_back(kind);
    auto segments = HistoryChart::segmentsOfKinds(history, names, shown);
    for (std::size_t i = 0; i < weekly.size(); ++i) {
        const auto& [kind, title] = weekly[i];
        content.charts.push_back(
            {kind, title, std::move(segments[i]), HistoryChart::resetTicks(history, kind, shown)});
    }
    content.dayBoundaries = HistoryChart::dayBoundaries(shown);
    content.strip = HistoryCoverage::stripSegments(history, shown);
    content.coverage =
        HistoryFacts::coverageLine(HistoryCoverage::fraction(history, shown), "the last 7 days");
    content.facts = factRows(history, kinds, shown, shortTime);
    content.receipt = receiptContent(account.displayName, receipts, shortTime);
    return content;
}

} // namespace vellumor
