#pragma once

#include "accounts/Account.h"
#include "history/HistoryChart.h"
#include "history/HistoryCoverage.h"
#include "history/ReceiptStore.h"
#include "ui/model/AccountSectionContent.h"

#include <string>
#include <vector>

namespace vellumor {

// One weekly limit's last seven days. Without segments there is not enough to draw.
struct HistoryChartContent {
    std::string kind;
    std::string title;
    std::vector<HistoryChart::Points> segments;
    std::vector<double> resetTicks; // places along the span, 0 to 1

    bool operator==(const HistoryChartContent&) const = default;
};

// A fact in two columns: "Session:" and "Peak 93% · Fri 4:30 PM".
struct HistoryFactRow {
    std::string title;
    std::string text;

    bool operator==(const HistoryFactRow&) const = default;
};

// The block about the last week that has ended. An empty text is one that is not shown.
struct ReceiptContent {
    std::string
        title; // "Last week · Nov 7 – Nov 14"; the sentence in its place where there is none
    std::string coverage;
    std::vector<HistoryFactRow> rows;
    std::string comparison;
    std::string summary; // for the clipboard; empty where there is no receipt

    bool operator==(const ReceiptContent&) const = default;
};

// What the popover shows of one account's history.
struct HistoryContent {
    static constexpr double span = 604800.0; // seconds before now

    std::string name;
    std::vector<HistoryChartContent> charts;
    std::vector<double> dayBoundaries; // places along the span, 0 to 1
    std::vector<HistoryCoverage::Segment> strip;
    std::string coverage;
    std::vector<HistoryFactRow> facts;
    ReceiptContent receipt;

    bool operator==(const HistoryContent&) const = default;

    // Pure, but for the time zone. `usage`: a null pointer where there is no reading.
    [[nodiscard]] static HistoryContent of(const Account& account, const UsageSamples& history,
                                           const WeeklyReceipts& receipts, const Usage* usage,
                                           Instant now, const ShortTime& shortTime);
};

} // namespace vellumor
