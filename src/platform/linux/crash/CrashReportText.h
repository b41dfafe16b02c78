#pragma once

#include "platform/linux/crash/CoreDump.h"

#include <optional>
#include <string>

// CrashReportText: a crash of this program as the two JSON documents of a crash report. Pure.
namespace vellumor::CrashReportText {

// What the journal does not tell of the process that crashed.
struct Known {
    std::optional<Instant> launchedAt;
    std::optional<std::string> version;
};

// Both documents, the first on a line of its own. Nothing of the user's stands in it but the names
// of the libraries that were in use: neither the command line nor a path. Nothing is given where
// some text is not UTF-8.
[[nodiscard]] std::optional<std::string> make(const CoreDump& dump, const Known& known);

// "Vellumor-2026-03-01-093000.ips", in UTC; "Vellumor-2026-03-01-093000-2.ips" for the second
// within one second.
[[nodiscard]] std::string fileName(Instant crashedAt, int number);

// The incident that a report is about; nothing where it is no such report.
[[nodiscard]] std::optional<std::string> incidentOf(const std::string& report);

} // namespace vellumor::CrashReportText
