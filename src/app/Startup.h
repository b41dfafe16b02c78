#pragma once

#include "base/Environment.h"
#include "platform/SingleInstance.h"

#include <functional>
#include <optional>
#include <string>

// Startup: what a start decides before anything of the application is built.
namespace vellumor::Startup {

enum class Mode { diagnostics, application };

// Diagnostics when VELLUMOR_DIAG is exactly "1".
[[nodiscard]] Mode mode(const Environment& environment);

// True for the superuser in somebody else's home, where every file written would belong to the
// wrong user.
[[nodiscard]] bool isForeignRoot(unsigned effectiveUser, std::optional<unsigned> homeOwner);

// Whether there is a screen that answers.
enum class Screen { there, absent };

// What the application start came to.
enum class Outcome { run, handedOver, noDisplay };

// Hands over to a running copy, or makes this one the running copy, in that order and before any
// file is made. Says what it did in one log line unless it is to run.
[[nodiscard]] Outcome begin(SingleInstance& instance, Screen screen,
                            std::function<void(const std::string& activationToken)> onActivate);

} // namespace vellumor::Startup
