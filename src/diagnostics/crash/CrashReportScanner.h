#pragma once

#include "base/Json.h"
#include "diagnostics/crash/CrashDigest.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// CrashReportScanner: the crash reports of this program in a folder. Reads, and writes nothing;
// what cannot be read is passed over. Blocks.
namespace vellumor::CrashReportScanner {

// What counts as recent where nothing else is told.
inline constexpr int recentDays = 7;
// A look at recent crashes goes no further back than that many reports.
inline constexpr std::size_t recentLimit = 20;

// One report: two JSON documents, the first of which stands on the first line.
struct Report {
    std::string url;
    Json header; // an object
    Json body;   // an object
};

// The paths of this program's reports, by file name. None when there is no folder.
[[nodiscard]] std::vector<std::string> ownReports(const std::string& directory);

[[nodiscard]] std::optional<Report> parse(std::string_view data, std::string url);

// One report, read from its file.
[[nodiscard]] std::optional<CrashDigest> digestOf(const std::string& url);

// Those of the last `limit` reports that can be read, the last by name first.
[[nodiscard]] std::vector<CrashDigest> digests(const std::string& directory, std::size_t limit);

// Those of them that tell when the program crashed, and that it was within the last `days` days.
[[nodiscard]] std::vector<CrashDigest> recentDigests(int days, Instant now,
                                                     const std::string& directory);

} // namespace vellumor::CrashReportScanner
