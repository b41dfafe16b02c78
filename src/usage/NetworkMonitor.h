#pragma once

#include "platform/PathMonitor.h"

#include <functional>

namespace vellumor {

// Whether the machine is online, so that no call is wasted and a stale state can be explained. Main
// thread only.
class NetworkMonitor {
public:
    // Starts listening. `paths` and whoever sets onChange outlive the monitor's use.
    explicit NetworkMonitor(PathMonitor& paths);
    NetworkMonitor(const NetworkMonitor&) = delete;
    NetworkMonitor& operator=(const NetworkMonitor&) = delete;

    // True until the system has said otherwise.
    [[nodiscard]] bool isOnline() const { return m_isOnline; }

    // Called with the new state at each change, and never for an update that repeats the old one.
    std::function<void(bool isOnline)> onChange;

private:
    void update(bool satisfied);

    bool m_isOnline = true;
};

} // namespace vellumor
