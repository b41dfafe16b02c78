#include "diagnostics/crash/CrashReporter.h"

#include "diagnostics/crash/CrashReportScanner.h"
#include "diagnostics/crash/CrashReportState.h"
#include "telemetry/TelemetryBuckets.h"

namespace vellumor::CrashReporter {

namespace {

Properties propertiesOf(const CrashDigest& digest)
{
    return {
        {"exception_type", digest.exceptionType},
        {"signal", digest.signal},
        {"area", digest.area},
        {"signature", digest.signature},
        {"crashed_version", digest.crashedVersion},
        {"uptime", digest.uptime},
    };
}

bool wasReported(const CrashReportState& state, const CrashDigest& digest, const std::string& today)
{
    const auto day = state.lastReportedDay.find(digest.signature);
    return day != state.lastReportedDay.end() && day->second == today;
}

} // namespace

Summary sweep(const FileStore& files, const std::string& directory, const std::string& stateURL,
              Instant now, const Capture& capture)
{
    Summary summary;
    const auto reports = CrashReportScanner::ownReports(directory);
    if (reports.empty())
        return summary;
    summary.reports = static_cast<int>(reports.size());
    const CrashReportState before = CrashReportState::load(stateURL);
    CrashReportState state = before;
    const std::string today = TelemetryBuckets::utcDay(now);
    for (const std::string& report : reports) {
        const auto digest = CrashReportScanner::digestOf(report);
        if (!digest) {
            ++summary.unreadable;
        } else if (state.isConsumed(*digest)) {
            ++summary.consumed;
        } else if (wasReported(state, *digest, today)) {
            ++summary.repeated;
            state.record(*digest, today, CrashReportState::Sent::no);
        } else {
            ++summary.captured;
            capture(propertiesOf(*digest));
            state.record(*digest, today, CrashReportState::Sent::yes);
        }
    }
    if (state != before)
        state.save(files, stateURL);
    return summary;
}

} // namespace vellumor::CrashReporter
