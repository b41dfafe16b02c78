#include "platform/linux/status/LinuxStatusService.h"

#include "platform/linux/status/StatusAdaptor.h"

namespace vellumor {

namespace {

const auto objectPath = QStringLiteral("/dev/quorle/vellumor");

} // namespace

LinuxStatusService::LinuxStatusService(const QDBusConnection& bus)
    : m_bus(bus)
{
}

LinuxStatusService::~LinuxStatusService()
{
    delete m_adaptor;
}

// Who has waited for the name has seen it before there was anything to ask for.
void LinuxStatusService::start(Handlers handlers)
{
    QObject* const object = m_bus.isConnected() ? m_bus.objectRegisteredAt(objectPath) : nullptr;
    if (object == nullptr)
        return;
    m_adaptor = new StatusAdaptor(object, m_bus, std::move(handlers));
    announceChange();
}

void LinuxStatusService::announceChange()
{
    if (m_adaptor)
        m_bus.send(QDBusMessage::createSignal(objectPath, QStringLiteral("dev.quorle.Vellumor1"),
                                              QStringLiteral("Changed")));
}

} // namespace vellumor
