#pragma once

#include "base/Environment.h"

namespace vellumor {

// Whether there is a screen to show anything on: a display server that the environment names and
// that answers, since Qt ends the process with a core dump where none does. QT_QPA_PLATFORM chooses
// among the kinds; one that needs no server is always there.
[[nodiscard]] bool isDisplayReachable(const Environment& environment);

} // namespace vellumor
