#pragma once

#include "diagnostics/LaunchSweep.h"
#include "platform/HttpPoster.h"
#include "platform/linux/QtProcessRunner.h"
#include "platform/linux/crash/JournalCrashImporter.h"
#include "telemetry/LiveTelemetryRecorder.h"
#include "telemetry/Telemetry.h"
#include "telemetry/sending/DailyTelemetry.h"
#include "telemetry/sending/TelemetryTransport.h"

#include <memory>

namespace vellumor {

// What the maker may learn: counters and events, as far as the user allows them, and the crashes.
// Main thread only.
class Reports {
public:
    struct Parts {
        Clock& clock;
        const FileStore& files;
        Worker& storeWorker; // which writes what the program keeps
        RunJob write;
        HttpPoster& poster;
        ProcessRunner& processes;
        std::function<bool()> isOnline;
        DailyTelemetry::GatherContext gatherContext;
    };

    // Everything borrowed outlives it.
    Reports(const Environment& environment, const Folders& folders, Parts parts);

    [[nodiscard]] TelemetryStore& store() { return m_store; }
    [[nodiscard]] TelemetryRecorder& recorder() { return m_recorder; }
    // The daily event, when it is due.
    [[nodiscard]] Task<> emitSpineIfDue(Instant now) { return m_daily.emitSpineIfDue(now); }
    // Takes over what the system has noted of this program's crashes, and tells of the new ones.
    [[nodiscard]] Task<> sweepCrashes();

private:
    Parts m_parts;
    Folders m_folders;
    TelemetryStore m_store;
    std::unique_ptr<TelemetryTransport> m_transport;
    Telemetry m_telemetry;
    LiveTelemetryRecorder m_recorder{m_store, m_telemetry};
    DailyTelemetry m_daily;
    JournalCrashImporter m_importer;
};

} // namespace vellumor
