#pragma once

#include "telemetry/Telemetry.h"
#include "telemetry/TelemetryRecorder.h"
#include "telemetry/TelemetrySpine.h"
#include "telemetry/TelemetryStore.h"

#include <optional>

namespace vellumor {

// Counts what it is told in the store, and captures the events that come of it.
class LiveTelemetryRecorder final : public TelemetryRecorder {
public:
    // Both outlive it.
    LiveTelemetryRecorder(TelemetryStore& store, Telemetry& telemetry);

    void capture(const TelemetryEvent& event) override;
    void noteServed(std::string_view layer) override;
    void noteFailure(const std::string& category, const std::string& layer) override;
    void noteReviveUnavailable() override;
    void noteNotification() override;
    void notePopoverOpened() override;
    void noteAccounts(std::size_t count) override;

    // The daily event comes in two steps, so that a program that ends between them cannot send it
    // twice: the day is marked, and only then the event is sent. The first step gives the config as
    // it stood before; nothing when the event is not due, or the user allows none.
    [[nodiscard]] std::optional<TelemetryConfig> beginSpineIfDue(Instant now);
    void finishSpine(const TelemetryConfig& kept, const TelemetrySpine::Context& context,
                     Instant now);

private:
    TelemetryStore& m_store;
    Telemetry& m_telemetry;
};

} // namespace vellumor
