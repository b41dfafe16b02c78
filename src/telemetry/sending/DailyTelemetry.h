#pragma once

#include "async/Task.h"
#include "async/Worker.h"
#include "telemetry/LiveTelemetryRecorder.h"

#include <functional>

namespace vellumor {

// Sends the daily event when it is due. Main thread only.
class DailyTelemetry {
public:
    // What the program knows at that moment; may wait for a file.
    using GatherContext = std::function<Task<TelemetrySpine::Context>()>;

    // `worker` is the one that writes the store's file. All of it outlives this, and this its
    // tasks.
    DailyTelemetry(LiveTelemetryRecorder& recorder, Worker& worker, GatherContext context);

    // Called often: it costs a comparison but for once a day.
    [[nodiscard]] Task<> emitSpineIfDue(Instant now);

private:
    LiveTelemetryRecorder& m_recorder;
    Worker& m_worker;
    GatherContext m_context;
};

} // namespace vellumor
