#pragma once

#include "history/HistoryFacts.h"
#include "history/ResetAnchor.h"
#include "history/TimeSpan.h"
#include "history/UsageSample.h"

#include <optional>
#include <string>
#include <vector>

namespace vellumor {

// What remains of one completed week of an account when its samples are gone. A week ends where the
// account's own weekly limit resets.
struct WeeklyReceipt {
    struct WindowFacts {
        std::string kind;
        double peakPercent = 0;
        Instant peakAt{}; // when it was first seen
        int observedResets = 0;

        bool operator==(const WindowFacts&) const = default;
    };

    Instant weekStart{};
    Instant weekEnd{};
    double coveragePercent = 0;       // of the week that was watched, 0 to 100
    int sampleCount = 0;              // within the week
    std::vector<WindowFacts> windows; // "session" first, the others by their kind
    Instant archivedAt{};

    bool operator==(const WeeklyReceipt&) const = default;

    static constexpr double week = 604800.0; // seconds

    // All are pure, but for the time zone of words.

    // The anchor whose resets end this account's weeks; nothing when none was learnt.
    [[nodiscard]] static std::optional<ResetAnchor> weeklyAnchor(const AnchorsByKind& anchors);
    // The completed weeks that have samples and are not archived yet, the oldest first; twelve at
    // most.
    [[nodiscard]] static std::vector<TimeSpan>
    completedWeeks(const AnchorsByKind& anchors, const std::optional<Instant>& lastArchivedEnd,
                   const UsageSamples& samples, Instant now);
    // Nothing for a week without samples.
    [[nodiscard]] static std::optional<WeeklyReceipt>
    assemble(const UsageSamples& samples, const TimeSpan& of, Instant archivedAt);

    // The week in a few lines, for a clipboard.
    [[nodiscard]] std::string summaryText(const std::string& accountName,
                                          const HistoryFacts::ShortTime& shortTime) const;
    // "Weekly: Peak 93% · Fri 4:30 PM · At least 1 reset seen".
    [[nodiscard]] static std::string windowLine(const WindowFacts& facts,
                                                const HistoryFacts::ShortTime& shortTime);
    // "Weekly peak 93% vs 71% the week before"; nothing when the two were not watched alike.
    [[nodiscard]] static std::optional<std::string> comparisonLine(const WeeklyReceipt& latest,
                                                                   const WeeklyReceipt& previous);
};

// Whether a window of that kind belongs to the weekly ones.
[[nodiscard]] bool isWeeklyKind(std::string_view kind);

} // namespace vellumor
