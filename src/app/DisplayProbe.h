#pragma once

#include "base/Environment.h"

namespace vellumor {

// Whether the display server that the environment names answers. Qt ends the process with a core
// dump where it does not. True where the environment leaves the choice to something else.
[[nodiscard]] bool isDisplayReachable(const Environment& environment);

} // namespace vellumor
