#pragma once

#include "telemetry/TelemetryEvent.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace vellumor {

// What the rest of the program tells telemetry. Main thread only; nothing of it waits. This one
// does nothing, and stands where there is no telemetry.
class TelemetryRecorder {
public:
    TelemetryRecorder() = default;
    TelemetryRecorder(const TelemetryRecorder&) = delete;
    TelemetryRecorder& operator=(const TelemetryRecorder&) = delete;
    virtual ~TelemetryRecorder() = default;

    virtual void capture(const TelemetryEvent&) {}
    // A fetch has given a reading of this layer, without an error.
    virtual void noteServed(std::string_view) {}
    // A fetch has failed: the category and the layer.
    virtual void noteFailure(const std::string&, const std::string&) {}
    // An expired token could not be renewed, since there is no program to do it.
    virtual void noteReviveUnavailable() {}
    virtual void noteNotification() {}
    virtual void notePopoverOpened() {}
    // How many accounts a scan has found.
    virtual void noteAccounts(std::size_t) {}

    // One that does nothing, for whoever is given none.
    [[nodiscard]] static TelemetryRecorder& none()
    {
        static TelemetryRecorder nothing; // without state
        return nothing;
    }
};

} // namespace vellumor
