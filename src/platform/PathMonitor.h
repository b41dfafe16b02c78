#pragma once

#include <functional>

namespace vellumor {

// Tells whether a usable network path exists.
class PathMonitor {
public:
    virtual ~PathMonitor() = default;

    // Calls `onUpdate` on the main thread from now on: soon with the present state, then at each
    // report of the system, changed or not. Where the system cannot tell, it is called with true.
    virtual void start(std::function<void(bool satisfied)> onUpdate) = 0;
};

} // namespace vellumor
