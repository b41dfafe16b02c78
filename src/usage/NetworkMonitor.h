#pragma once

#include "platform/PathMonitor.h"

#include <functional>
#include <memory>

namespace vellumor {

// Whether the machine is online, so that no call is wasted and a stale state can be explained. Main
// thread only.
class NetworkMonitor {
public:
    // Starts listening; updates that come after the monitor's end are dropped.
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
    std::shared_ptr<NetworkMonitor*> m_self =
        std::make_shared<NetworkMonitor*>(this); // gone with this
};

} // namespace vellumor
