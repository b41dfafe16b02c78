#include "platform/linux/QtPathMonitor.h"

#include <utility>

namespace vellumor {

bool isSatisfied(QNetworkInformation::Reachability reachability)
{
    using Reachability = QNetworkInformation::Reachability;
    return reachability != Reachability::Disconnected && reachability != Reachability::Local;
}

void QtPathMonitor::start(std::function<void(bool satisfied)> onUpdate)
{
    m_onUpdate = std::move(onUpdate);
    const bool known =
        QNetworkInformation::loadBackendByFeatures(QNetworkInformation::Feature::Reachability);
    if (known) {
        QObject::connect(
            QNetworkInformation::instance(), &QNetworkInformation::reachabilityChanged, &m_life,
            [this](QNetworkInformation::Reachability now) { m_onUpdate(isSatisfied(now)); });
    }
    QMetaObject::invokeMethod(
        &m_life,
        [this, known] {
            m_onUpdate(!known || isSatisfied(QNetworkInformation::instance()->reachability()));
        },
        Qt::QueuedConnection);
}

} // namespace vellumor
