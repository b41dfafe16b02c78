#include "history/WeeklyReceipt.h"

#include "base/Format.h"
#include "history/HistoryCoverage.h"

#include <algorithm>
#include <cmath>
#include <set>

namespace vellumor {

namespace {

constexpr int mostWeeks = 12;
constexpr double comparableCoverage = 15.0; // percent points

constexpr std::chrono::seconds weekLength{604800};

std::vector<std::string> kindsOf(const UsageSamples& samples)
{
    std::set<std::string> kinds;
    for (const UsageSample& sample : samples) {
        for (const auto& [kind, percent] : sample.percents)
            kinds.insert(kind);
    }
    std::vector<std::string> sorted(kinds.begin(), kinds.end());
    std::stable_partition(sorted.begin(), sorted.end(),
                          [](const auto& kind) { return kind == "session"; });
    return sorted;
}

bool hasSampleFrom(const UsageSamples& samples, const TimeSpan& week)
{
    return std::ranges::any_of(samples, [&](const UsageSample& sample) {
        return sample.at >= week.start && sample.at < week.end;
    });
}

const WeeklyReceipt::WindowFacts* primaryOf(const WeeklyReceipt& receipt)
{
    const auto& windows = receipt.windows;
    auto found = std::ranges::find(windows, "weekly_all", &WeeklyReceipt::WindowFacts::kind);
    if (found == windows.end())
        found = std::ranges::find_if(windows,
                                     [](const auto& facts) { return isWeeklyKind(facts.kind); });
    return found == windows.end() ? nullptr : &*found;
}

} // namespace

bool isWeeklyKind(std::string_view kind)
{
    return kind == "weekly_all" || kind.starts_with("seven_day");
}

std::optional<ResetAnchor> WeeklyReceipt::weeklyAnchor(const AnchorsByKind& anchors)
{
    auto found = anchors.find("weekly_all");
    if (found == anchors.end())
        found = std::ranges::find_if(anchors,
                                     [](const auto& entry) { return isWeeklyKind(entry.first); });
    return found == anchors.end() ? std::nullopt : std::optional(found->second);
}

std::vector<TimeSpan> WeeklyReceipt::completedWeeks(const AnchorsByKind& anchors,
                                                    const std::optional<Instant>& lastArchivedEnd,
                                                    const UsageSamples& samples, Instant now)
{
    const auto anchor = weeklyAnchor(anchors);
    if (!anchor || samples.empty())
        return {};
    const Instant earliest = std::ranges::min(samples, {}, &UsageSample::at).at;
    const double periods = std::floor(secondsBetween(anchor->resetsAt, now) / week);
    Instant end = anchor->resetsAt + std::chrono::seconds(std::llround(periods * week));
    std::vector<TimeSpan> weeks;
    for (int step = 0; step < mostWeeks; ++step) {
        if ((lastArchivedEnd && end <= *lastArchivedEnd) || end <= earliest)
            break;
        const TimeSpan candidate{end - weekLength, end};
        if (hasSampleFrom(samples, candidate))
            weeks.push_back(candidate);
        end = candidate.start;
    }
    std::ranges::reverse(weeks);
    return weeks;
}

std::optional<WeeklyReceipt> WeeklyReceipt::assemble(const UsageSamples& samples,
                                                     const TimeSpan& of, Instant archivedAt)
{
    UsageSamples within = samples;
    std::erase_if(within, [&](const UsageSample& sample) { return !of.contains(sample.at); });
    if (within.empty())
        return std::nullopt;
    WeeklyReceipt receipt;
    receipt.weekStart = of.start;
    receipt.weekEnd = of.end;
    receipt.coveragePercent = HistoryCoverage::fraction(samples, of) * 100.0;
    receipt.sampleCount = static_cast<int>(within.size());
    receipt.archivedAt = archivedAt;
    for (const std::string& kind : kindsOf(within)) {
        const auto peak = HistoryCoverage::peak(within, kind, of);
        receipt.windows.push_back(
            {kind, peak->percent, peak->at, HistoryCoverage::observedResets(within, kind, of)});
    }
    return receipt;
}

std::string WeeklyReceipt::windowLine(const WindowFacts& facts,
                                      const HistoryFacts::ShortTime& shortTime)
{
    std::string line = LimitWindow::title(facts.kind, std::nullopt) + ": " +
                       HistoryFacts::peakPhrase(facts.peakPercent, facts.peakAt, shortTime);
    if (const auto resets = HistoryFacts::resetsPhrase(facts.observedResets))
        line += " · " + *resets;
    return line;
}

std::string WeeklyReceipt::summaryText(const std::string& accountName,
                                       const HistoryFacts::ShortTime& shortTime) const
{
    std::string text = accountName + " — week " + HistoryFacts::weekSpan(weekStart, weekEnd) +
                       "\n" + HistoryFacts::coverageLine(coveragePercent / 100.0, "the week");
    for (const WindowFacts& facts : windows)
        text += "\n" + windowLine(facts, shortTime);
    return text;
}

std::optional<std::string> WeeklyReceipt::comparisonLine(const WeeklyReceipt& latest,
                                                         const WeeklyReceipt& previous)
{
    if (std::abs(latest.coveragePercent - previous.coveragePercent) > comparableCoverage)
        return std::nullopt;
    const WindowFacts* now = primaryOf(latest);
    const WindowFacts* before = primaryOf(previous);
    if (now == nullptr || before == nullptr || now->kind != before->kind)
        return std::nullopt;
    return LimitWindow::title(now->kind, std::nullopt) + " peak " +
           Format::wholeText(now->peakPercent) + "% vs " + Format::wholeText(before->peakPercent) +
           "% the week before";
}

} // namespace vellumor
