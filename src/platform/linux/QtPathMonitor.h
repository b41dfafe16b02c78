#pragma once

#include "platform/PathMonitor.h"

#include <QNetworkInformation>
#include <QObject>

namespace vellumor {

// Whether a request is worth a try. A captive portal counts, since it says nothing about the other
// networks of the machine, and so does a state that is not known. Pure.
[[nodiscard]] bool isSatisfied(QNetworkInformation::Reachability reachability);

// PathMonitor on what Qt learns from NetworkManager or, without it, from GLib. Main thread only;
// start it once. Calls nothing back after its end.
class QtPathMonitor final : public PathMonitor {
public:
    void start(std::function<void(bool satisfied)> onUpdate) override;

private:
    std::function<void(bool)> m_onUpdate;
    QObject m_life; // what Qt asks whether it may still call
};

} // namespace vellumor
