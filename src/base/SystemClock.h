#pragma once

#include "base/Instant.h"

namespace vellumor {

// The system's wall clock, cut to whole milliseconds, so that what is stored equals what is held.
// The only reader of it.
[[nodiscard]] Instant systemNow();

} // namespace vellumor
