#include "telemetry/sending/DailyTelemetry.h"

namespace vellumor {

DailyTelemetry::DailyTelemetry(LiveTelemetryRecorder& recorder, Worker& worker,
                               GatherContext context)
    : m_recorder(recorder)
    , m_worker(worker)
    , m_context(std::move(context))
{
}

Task<> DailyTelemetry::emitSpineIfDue(Instant now)
{
    const std::optional<TelemetryConfig> kept = m_recorder.beginSpineIfDue(now);
    if (!kept)
        co_return;
    // The worker keeps the order, so that the mark is on the disk before anything is sent: a
    // program that dies in between has told its day.
    auto nothing = [] {};
    co_await m_worker.run(std::move(nothing));
    const TelemetrySpine::Context context = co_await m_context();
    m_recorder.finishSpine(*kept, context, now);
}

} // namespace vellumor
