#pragma once

#include "platform/StatusService.h"

#include <QDBusConnection>
#include <QPointer>

namespace vellumor {

class StatusAdaptor;

// StatusService by the interface dev.quorle.Vellumor1, on the object by which a second start
// reaches this copy too. Without a bus, or without that object, nobody can ask.
class LinuxStatusService final : public StatusService {
public:
    explicit LinuxStatusService(const QDBusConnection& bus = QDBusConnection::sessionBus());
    LinuxStatusService(const LinuxStatusService&) = delete;
    LinuxStatusService& operator=(const LinuxStatusService&) = delete;
    ~LinuxStatusService() override;

    void start(Handlers handlers) override;
    void announceChange() override;

private:
    QDBusConnection m_bus;
    QPointer<StatusAdaptor> m_adaptor; // owned by the object
};

} // namespace vellumor
