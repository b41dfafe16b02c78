#include "telemetry/LiveTelemetryRecorder.h"

#include "telemetry/TelemetryBuckets.h"

namespace vellumor {

namespace {

constexpr std::size_t several = 2;

} // namespace

LiveTelemetryRecorder::LiveTelemetryRecorder(TelemetryStore& store, Telemetry& telemetry)
    : m_store(store)
    , m_telemetry(telemetry)
{
}

void LiveTelemetryRecorder::capture(const TelemetryEvent& event)
{
    m_telemetry.capture(event);
}

void LiveTelemetryRecorder::noteServed(std::string_view layer)
{
    m_store.noteServed(layer);
}

void LiveTelemetryRecorder::noteFailure(const std::string& category, const std::string& layer)
{
    m_store.update([&](TelemetryConfig& config) {
        addOne(config.counters.failures);
        config.noteFailureCategory(category);
    });
    m_telemetry.capture(TelemetryEvent::diagnostic(category, layer));
}

void LiveTelemetryRecorder::noteReviveUnavailable()
{
    m_store.update([](TelemetryConfig& config) { addOne(config.counters.reviveUnavailable); });
}

void LiveTelemetryRecorder::noteNotification()
{
    m_store.update([](TelemetryConfig& config) { addOne(config.counters.notifications); });
}

void LiveTelemetryRecorder::notePopoverOpened()
{
    m_store.update([](TelemetryConfig& config) { addOne(config.counters.popoverOpens); });
}

// Once in an installation's life, whether or not the user allows the event then.
void LiveTelemetryRecorder::noteAccounts(std::size_t count)
{
    if (count < several || m_store.current().multiAccountReached)
        return;
    m_store.update([](TelemetryConfig& config) { config.multiAccountReached = true; });
    m_telemetry.capture(TelemetryEvent::multiAccountReached());
}

std::optional<TelemetryConfig> LiveTelemetryRecorder::beginSpineIfDue(Instant now)
{
    const std::string today = TelemetryBuckets::utcDay(now);
    const TelemetryConfig& current = m_store.current();
    if (!current.productAnalyticsEnabled || current.lastEmittedDay == today)
        return std::nullopt;
    TelemetryConfig kept = current;
    m_store.update([&](TelemetryConfig& config) { config.startPeriod(now, today); });
    return kept;
}

void LiveTelemetryRecorder::finishSpine(const TelemetryConfig& kept,
                                        const TelemetrySpine::Context& context, Instant now)
{
    m_telemetry.capture(TelemetryEvent::dayActive(TelemetrySpine::assemble(kept, context, now)));
}

} // namespace vellumor
