#pragma once

#include "support/private_bus/PrivateBus.h"

#include <memory>
#include <string>

namespace vellumor::test {

// The real keyring service on a private bus, with its files in the home of that bus. What was
// stored is there again for the next one on the same bus.
class KeyringDaemon {
public:
    enum class Start { unlocked, locked };

    // Waits until the service is on the bus. Throws std::runtime_error when it does not come up.
    explicit KeyringDaemon(const PrivateBus& bus, Start start = Start::unlocked);

    // Stores an item as a program of the desktop does it; another one of this service is replaced.
    // The keyring must be unlocked, as a prompt would wait for ever.
    void store(const std::string& service, const std::string& secret) const;
    // Locks all items. Nothing here can unlock them again.
    void lock() const;
    void stop() { m_daemon.reset(); }

private:
    const PrivateBus& m_bus;
    std::unique_ptr<ChildProcess> m_daemon;
};

} // namespace vellumor::test
