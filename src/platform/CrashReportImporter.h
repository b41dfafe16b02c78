#pragma once

#include "async/Task.h"
#include "base/Instant.h"

namespace vellumor {

// What the system noted of this program's crashes, as reports in the crash report folder. Main
// thread only, which waits for nothing.
class CrashReportImporter {
public:
    virtual ~CrashReportImporter() = default;

    // Writes a report of each crash since then that has none yet; gives how many. Creates nothing
    // when there is none. A system that notes no crashes, or does not answer, has had none.
    [[nodiscard]] virtual Task<int> importReports(Instant since) = 0;
};

} // namespace vellumor
