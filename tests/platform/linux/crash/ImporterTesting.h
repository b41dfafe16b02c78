#pragma once

#include "async/LiveClock.h"
#include "diagnostics/crash/CrashReportScanner.h"
#include "platform/linux/QtProcessRunner.h"
#include "platform/linux/crash/JournalCrashImporter.h"
#include "platform/linux/crash/JournalTesting.h"
#include "support/FakeClock.h"

#include <QCoroCore>

#include <gtest/gtest.h>

namespace vellumor::test {

inline const Instant installedAt = instant("2026-02-01T00:00:00Z");
inline const Instant crashTime = instant("2026-03-01T09:30:05.700Z");

// An importer with processes and files as they are, on a journal of the test's own.
struct ImporterTest : testing::Test {
    TempFolder folder;
    Journal journal{folder};
    LiveClock clock;
    Worker worker;
    QtProcessRunner processes{clock};
    FileStore files;
    std::string reports = folder.file("data/DiagnosticReports");
    // Not changed since before the crashes.
    std::string executable = "/opt/vellumor/vellumor";

    int importWith(const std::string& journalctl, Instant since = installedAt)
    {
        JournalCrashImporter importer(processes, worker, files,
                                      {executable, "1.0.0", reports, journalctl});
        return QCoro::waitFor(importer.importReports(since));
    }
    [[nodiscard]] std::vector<CrashDigest> digests() const
    {
        return CrashReportScanner::digests(reports, 100);
    }
};

} // namespace vellumor::test
