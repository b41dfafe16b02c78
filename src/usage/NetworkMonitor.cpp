#include "usage/NetworkMonitor.h"

namespace vellumor {

NetworkMonitor::NetworkMonitor(PathMonitor& paths)
{
    paths.start([this](bool satisfied) { update(satisfied); });
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
