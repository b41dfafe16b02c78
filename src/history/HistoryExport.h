#pragma once

#include "history/ReceiptStore.h"
#include "history/UsageSample.h"

#include <optional>
#include <string>
#include <string_view>

// HistoryExport: what is known of one account, for taking away: samples and receipts, nothing of
// the network and no credential. Pure.
namespace vellumor::HistoryExport {

// "at,kind,percent", and a line for each sample and kind. Dates in UTC with three digits; a percent
// is the shortest text that reads back as the same number, "42.0".
[[nodiscard]] std::string csv(UsageSamples samples);

// One document with all of it, in the form of the program's own files; nothing when a text in it is
// not valid UTF-8, or a number not finite.
[[nodiscard]] std::optional<std::string> json(const std::string& accountName, UsageSamples samples,
                                              const WeeklyReceipts& receipts, Instant exportedAt);

// "vellumor-history-my-work-2026-11-21.csv": the name in letters and figures of any script, the day
// in UTC.
[[nodiscard]] std::string filename(const std::string& accountName, std::string_view ext,
                                   Instant on);

} // namespace vellumor::HistoryExport
