#pragma once

#include "telemetry/TelemetryEnvironment.h"
#include "telemetry/TelemetryEvent.h"

#include <string>

namespace vellumor {

// Where events go that may leave. Main thread only; nothing of it waits.
class TelemetryOutlet {
public:
    virtual ~TelemetryOutlet() = default;

    [[nodiscard]] virtual bool hasKey() const = 0;
    // There is a key, and this is no build of somebody who works on the program.
    [[nodiscard]] virtual bool isTransmitting() const = 0;
    [[nodiscard]] virtual TelemetryEnvironment environment() const = 0;

    // Takes one event, to be sent when it can be.
    virtual void enqueue(std::string name, std::string distinctID,
                         TelemetryProperties properties) = 0;
};

} // namespace vellumor
