#pragma once

#include "store/FileCalls.h"

namespace vellumor::simulation {

// Calls that cost the disk nothing: a simulated week is no power cut.
struct QuickFileCalls final : FileCalls {
    [[nodiscard]] int fsync(int) const override { return 0; }
};

} // namespace vellumor::simulation
