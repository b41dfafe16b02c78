#pragma once

#include "async/Task.h"
#include "async/Worker.h"
#include "platform/PathMonitor.h"

#include <QNetworkInformation>
#include <QObject>
#include <QPointer>

#include <chrono>
#include <string>

namespace vellumor {

// Whether a request is worth a try. A captive portal counts, since it says nothing about the other
// networks of the machine, and so does a state that is not known. Pure.
[[nodiscard]] bool isSatisfied(QNetworkInformation::Reachability reachability);

// PathMonitor on what Qt learns from NetworkManager or, without it, from GLib. Both would wait for
// a system bus or a NetworkManager that never answers; there the path counts as satisfied. Main
// thread only; start it once. Calls nothing back after its end.
class QtPathMonitor final : public PathMonitor {
public:
    // `worker` outlives it; the address as DBUS_SYSTEM_BUS_ADDRESS has it, empty for the usual one.
    QtPathMonitor(Worker& worker, std::string systemBusAddress,
                  std::chrono::milliseconds lookAgainAfter = std::chrono::minutes(1));

    void start(std::function<void(bool satisfied)> onUpdate) override;

private:
    [[nodiscard]] static Task<> begin(QPointer<QObject> life, QtPathMonitor& monitor);
    void listen();
    void lookLater();

    Worker& m_worker;
    std::string m_systemBusAddress;
    std::chrono::milliseconds m_lookAgainAfter;
    std::function<void(bool)> m_onUpdate;
    QObject m_life; // what Qt asks whether it may still call
    Task<> m_begun;
};

} // namespace vellumor
