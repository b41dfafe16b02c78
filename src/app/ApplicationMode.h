#pragma once

#include "base/Environment.h"

namespace vellumor {

// The program as people use it: hands over to a running copy, or runs until it is ended. Gives the
// exit status.
[[nodiscard]] int runApplicationMode(int argc, char** argv, const Environment& environment);

} // namespace vellumor
