#pragma once

#include "base/Clock.h"
#include "base/RunJob.h"
#include "store/FileStore.h"
#include "telemetry/TelemetryConfig.h"

#include <functional>
#include <string>
#include <string_view>
#include <thread>

namespace vellumor {

// Keeps telemetry.json. Each change is handed to `runJob` at once, to be written; a failed write
// leaves the file as it was, and nobody hears of it. Belongs to the thread that made it, which is
// the main thread.
class TelemetryStore {
public:
    // Loads; a file that is missing, broken, of a newer version or without an identity is replaced
    // by a new one at once, any other is left as it is. `files` and `clock` outlive the store.
    TelemetryStore(const FileStore& files, const Clock& clock, std::string fileURL, RunJob runJob);
    TelemetryStore(const TelemetryStore&) = delete;
    TelemetryStore& operator=(const TelemetryStore&) = delete;

    // What the file says, or a new installation's config that nobody keeps. Writes nothing.
    [[nodiscard]] static TelemetryConfig load(const std::string& fileURL, Instant now);

    void setCurrent(TelemetryConfig config);
    // `change` works on the current config, which is written afterwards.
    void update(const std::function<void(TelemetryConfig&)>& change);
    // One more reading that came from this layer.
    void noteServed(std::string_view layer);
    // Somebody new, with nothing counted. What the user allows stays, and so do the caps: a new
    // name is no way around them.
    void resetIdentity();

    [[nodiscard]] const TelemetryConfig& current() const;
    [[nodiscard]] const std::string& fileURL() const { return m_fileURL; }

private:
    void persist();

    const FileStore& m_files;
    const Clock& m_clock;
    std::string m_fileURL;
    RunJob m_runJob;
    std::thread::id m_owner = std::this_thread::get_id();
    TelemetryConfig m_current;
};

} // namespace vellumor
