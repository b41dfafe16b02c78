#include "diagnostics/LaunchSweep.h"

#include "diagnostics/crash/CrashReportState.h"

#include <utility>
#include <vector>

namespace vellumor::CrashReporter {

namespace {

struct Swept {
    Summary summary;
    std::vector<Properties> captured;
};

Swept sweepNow(const FileStore& files, const Folders& folders, Instant now)
{
    Swept swept;
    swept.summary =
        sweep(files, folders.crashReports(), CrashReportState::fileURL(folders.vellumor()), now,
              [&swept](const Properties& crash) { swept.captured.push_back(crash); });
    return swept;
}

} // namespace

Task<Summary> sweepOnLaunch(LaunchParts parts, Instant installedAt, Instant now)
{
    co_await parts.importer.importReports(installedAt);
    auto job = [&files = parts.files, folders = parts.folders, now] {
        return sweepNow(files, folders, now);
    };
    const Swept swept = co_await parts.worker.run(std::move(job));
    for (const Properties& crash : swept.captured)
        parts.capture(crash);
    auto summary = swept.summary;
    co_return summary;
}

} // namespace vellumor::CrashReporter
