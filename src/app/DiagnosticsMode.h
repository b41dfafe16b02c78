#pragma once

#include "base/Environment.h"

namespace vellumor {

// Prints the headless report on standard output. Needs neither display nor bus. Gives the exit
// status, 0.
[[nodiscard]] int runDiagnosticsMode(int argc, char** argv, const Environment& environment);

} // namespace vellumor
