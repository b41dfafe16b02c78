#pragma once

#include "diagnostics/crash/CrashDigest.h"

#include <cstddef>
#include <vector>

namespace vellumor {

// The crash reports on disk.
struct KnownCrashes {
    struct Crash {
        CrashDigest digest;
        bool isReported = false; // a sweep has dealt with it
    };

    std::size_t reportCount = 0; // unreadable ones too
    std::vector<Crash> crashes;  // the last of those that can be read, the latest first
};

} // namespace vellumor
