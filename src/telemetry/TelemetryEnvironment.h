#pragma once

#include <string_view>

namespace vellumor {

// Whether the events are those of a released build or of somebody who works on the program.
enum class TelemetryEnvironment { dev, prod };

[[nodiscard]] constexpr std::string_view name(TelemetryEnvironment environment)
{
    return environment == TelemetryEnvironment::prod ? "prod" : "dev";
}

} // namespace vellumor
