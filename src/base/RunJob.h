#pragma once

#include <functional>

namespace vellumor {

// Where something is done that may wait, such as writing a file: on a thread for that, one job
// after another, or at once.
using RunJob = std::function<void(std::function<void()> job)>;

inline void runAtOnce(const std::function<void()>& job)
{
    job();
}

} // namespace vellumor
