#pragma once

#include "async/Task.h"

#include <exception>

namespace vellumor {

// For a task that nobody awaits, and that must not end half done: an exception, which only memory
// that cannot be had throws, would vanish in it. It ends the program instead.
inline Task<> orEnd(Task<> task)
{
    try {
        co_await task;
    } catch (...) {
        std::terminate();
    }
}

} // namespace vellumor
