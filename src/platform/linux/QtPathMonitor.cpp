#include "platform/linux/QtPathMonitor.h"

#include "async/OrEnd.h"
#include "platform/linux/SystemBus.h"

#include <QTimer>

#include <utility>

namespace vellumor {

namespace {

constexpr SystemBus::Property networkManagerState{"org.freedesktop.NetworkManager",
                                                  "/org/freedesktop/NetworkManager",
                                                  "org.freedesktop.NetworkManager", "State"};

} // namespace

bool isSatisfied(QNetworkInformation::Reachability reachability)
{
    using Reachability = QNetworkInformation::Reachability;
    return reachability != Reachability::Disconnected && reachability != Reachability::Local;
}

QtPathMonitor::QtPathMonitor(Worker& worker, std::string systemBusAddress,
                             std::chrono::milliseconds lookAgainAfter)
    : m_worker(worker)
    , m_systemBusAddress(std::move(systemBusAddress))
    , m_lookAgainAfter(lookAgainAfter)
{
}

void QtPathMonitor::start(std::function<void(bool satisfied)> onUpdate)
{
    m_onUpdate = std::move(onUpdate);
    m_begun = orEnd(begin(&m_life, *this));
}

Task<> QtPathMonitor::begin(QPointer<QObject> life, QtPathMonitor& monitor)
{
    auto look = [address = monitor.m_systemBusAddress] {
        return SystemBus::isSilent(address, networkManagerState);
    };
    const bool isSilent = co_await monitor.m_worker.run(std::move(look));
    if (!life)
        co_return;
    if (isSilent)
        monitor.lookLater();
    else
        monitor.listen();
}

// A machine that has just been started may take its time.
void QtPathMonitor::lookLater()
{
    m_onUpdate(true);
    QTimer::singleShot(m_lookAgainAfter, &m_life,
                       [this] { m_begun = orEnd(begin(&m_life, *this)); });
}

void QtPathMonitor::listen()
{
    using Reachability = QNetworkInformation::Reachability;
    if (!QNetworkInformation::loadBackendByFeatures(QNetworkInformation::Feature::Reachability)) {
        m_onUpdate(true);
        return;
    }
    auto* const system = QNetworkInformation::instance();
    QObject::connect(system, &QNetworkInformation::reachabilityChanged, &m_life,
                     [this](Reachability now) { m_onUpdate(isSatisfied(now)); });
    m_onUpdate(isSatisfied(system->reachability()));
}

} // namespace vellumor
