#pragma once

#include <functional>

namespace vellumor {

// Tells when the machine goes to sleep and when it is back.
class SleepWatcher {
public:
    virtual ~SleepWatcher() = default;

    // Calls on the main thread from now on. A wake may come without the sleep before it.
    virtual void start(std::function<void()> willSleep, std::function<void()> didWake) = 0;
};

} // namespace vellumor
