#pragma once

#include "async/Worker.h"
#include "platform/CrashReportImporter.h"
#include "platform/ProcessRunner.h"
#include "platform/linux/crash/ReportFolder.h"

#include <string>
#include <string_view>
#include <vector>

namespace vellumor {

// The core dumps of this program that the systemd journal tells of. journalctl reads it, in a
// process of its own that may hang or use much memory; what it says is read by the worker.
class JournalCrashImporter final : public CrashReportImporter {
public:
    struct Setting {
        std::string executable;   // of this program: its path
        std::string version;      // of this program
        std::string reportFolder; // need not exist
        std::string journalctl = "/usr/bin/journalctl";
    };

    // Everything borrowed outlives it.
    JournalCrashImporter(ProcessRunner& processes, Worker& worker, const FileStore& files,
                         Setting setting);

    [[nodiscard]] Task<int> importReports(Instant since) override;

    // The crashes that the journal's answer tells of, the first one first; those from before
    // `since`, and lines that are no such entry, are left out. Pure.
    [[nodiscard]] static std::vector<CoreDump> crashesIn(std::string_view answer, Instant since);

private:
    struct Crash {
        CoreDump dump;
        CrashReportText::Known known;
    };

    [[nodiscard]] Task<ProcessResult> ask(std::vector<std::string> arguments,
                                          std::size_t outputLimit);
    [[nodiscard]] Task<std::vector<Crash>> withLaunches(std::vector<Crash> crashes);
    [[nodiscard]] std::vector<Crash> newCrashes(std::string_view answer, Instant since) const;

    ProcessRunner& m_processes;
    Worker& m_worker;
    Setting m_setting;
    ReportFolder m_folder; // touched by the worker alone
};

} // namespace vellumor
