#include "app/Reports.h"

#include "app/BuildSettings.h"
#include "base/Version.h"
#include "platform/linux/AutostartFile.h"
#include "store/FileReader.h"
#include "telemetry/OsRelease.h"

namespace vellumor {

namespace {

// A file of some lines that is always there; read once, before anything is shown.
std::string systemName()
{
    for (const std::string_view path : OsRelease::files) {
        const FileContents contents = readFile(std::string(path));
        if (contents.status == ReadStatus::ok)
            return OsRelease::nameAndVersion(contents.bytes);
    }
    return OsRelease::nameAndVersion({});
}

// Not the AppImage that it was unpacked from: the journal knows a crash by the file that ran.
std::string runningFile()
{
    return ownProgram(Environment());
}

} // namespace

Reports::Reports(const Environment& environment, const Folders& folders, Parts parts)
    : m_parts(std::move(parts))
    , m_folders(folders)
    , m_store(m_parts.files, m_parts.clock, folders.vellumor() + "/telemetry.json", m_parts.write)
    , m_transport(
          TelemetryTransport::standard(m_parts.poster, m_parts.clock, m_parts.isOnline, environment,
                                       {BuildSettings::posthogKey, BuildSettings::posthogHost}))
    , m_telemetry({.config = [this] { return m_store.current(); },
                   .transport = *m_transport,
                   .version = std::string(version),
                   .os = systemName(),
                   .now = [this] { return m_parts.clock.now(); },
                   .charge =
                       [this](const Telemetry::ChangeCaps& change) {
                           m_store.update([&](TelemetryConfig& config) { change(config.caps); });
                       }})
    , m_daily(m_recorder, m_parts.storeWorker, m_parts.gatherContext)
    , m_importer(m_parts.processes, m_parts.storeWorker, m_parts.files,
                 {.executable = runningFile(),
                  .version = std::string(version),
                  .reportFolder = folders.crashReports()})
{
}

Task<> Reports::sweepCrashes()
{
    CrashReporter::LaunchParts parts{m_importer, m_parts.storeWorker, m_parts.files, m_folders,
                                     [this](const CrashReporter::Properties& crash) {
                                         m_recorder.capture(TelemetryEvent::crashDetected(crash));
                                     }};
    co_await CrashReporter::sweepOnLaunch(std::move(parts), m_store.current().installedAt,
                                          m_parts.clock.now());
}

} // namespace vellumor
