#include "usage/NetworkMonitor.h"

namespace vellumor {

NetworkMonitor::NetworkMonitor(PathMonitor& paths)
{
    paths.start([self = std::weak_ptr(m_self)](bool satisfied) {
        if (const auto monitor = self.lock())
            (*monitor)->update(satisfied);
    });
}

void NetworkMonitor::update(bool satisfied)
{
    if (satisfied == m_isOnline)
        return;
    m_isOnline = satisfied;
    if (onChange)
        onChange(m_isOnline);
}

} // namespace vellumor
