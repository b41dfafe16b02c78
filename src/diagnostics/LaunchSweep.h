#pragma once

#include "async/Task.h"
#include "async/Worker.h"
#include "diagnostics/crash/CrashReporter.h"
#include "platform/CrashReportImporter.h"
#include "store/Folders.h"

namespace vellumor::CrashReporter {

// What a start has to do with crashes: take over what the system has noted of them, and tell of
// those that are new. Everything borrowed outlives it.
struct LaunchParts {
    CrashReportImporter& importer;
    Worker& worker; // which writes what the program keeps
    const FileStore& files;
    Folders folders;
    Capture capture; // called on the main thread, when the sweep is over
};

// Once at the start, on the main thread, which waits for nothing. `installedAt`: crashes from
// before are none of this installation's. `now` gives the day.
[[nodiscard]] Task<Summary> sweepOnLaunch(LaunchParts parts, Instant installedAt, Instant now);

} // namespace vellumor::CrashReporter
