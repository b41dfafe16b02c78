#pragma once

#include "support/private_bus/PrivateBus.h"

#include <QDBusConnection>

#include <memory>
#include <string>

namespace vellumor::test {

// What the program hears of its machine: logind and NetworkManager on a system bus of the test's
// own, played by the templates of python-dbusmock. NetworkManager says at first that all is well.
class Machine {
public:
    // As NetworkManager numbers them.
    enum class Network { disconnected = 20, connecting = 40, local = 50, site = 60, global = 70 };

    // Everything lies in `folder`, which outlives it. Throws std::runtime_error when a service does
    // not start, and from every call that is not answered.
    explicit Machine(const std::string& folder);
    Machine(const Machine&) = delete;
    Machine& operator=(const Machine&) = delete;
    ~Machine();

    void goToSleep() const { tellOfSleep(true); }
    void wakeUp() const { tellOfSleep(false); }
    void setNetwork(Network state) const;
    // It stays on the bus and answers nothing any more.
    void hangNetworkManager() const;
    // Whether somebody listens to both.
    [[nodiscard]] bool isListenedTo() const;
    // Returns when the process has read all that was told before, on each of its connections: what
    // it is told afterwards comes after that to its event loop, too.
    void waitUntilHeardBy(pid_t process) const;

    [[nodiscard]] const PrivateBus& bus() const { return m_bus; }

private:
    [[nodiscard]] std::unique_ptr<ChildProcess> play(const std::string& service) const;
    void tellOfSleep(bool isBeginning) const;
    void call(const QDBusMessage& message) const;

    PrivateBus m_bus;
    std::unique_ptr<ChildProcess> m_logind;
    std::unique_ptr<ChildProcess> m_networkManager;
    QString m_connectionName;
    QDBusConnection m_connection;
};

} // namespace vellumor::test
