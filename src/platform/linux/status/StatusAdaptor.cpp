#include "platform/linux/status/StatusAdaptor.h"

#include <QDBusError>

namespace vellumor {

StatusAdaptor::StatusAdaptor(QObject* object, const QDBusConnection& bus,
                             StatusService::Handlers handlers)
    : QDBusAbstractAdaptor(object)
    , m_bus(bus)
    , m_handlers(std::move(handlers))
{
    StatusEncoding::registerTypes();
}

StatusMaps StatusAdaptor::accounts() const
{
    return StatusEncoding::accounts(m_handlers.report());
}

qlonglong StatusAdaptor::lastUpdate() const
{
    return StatusEncoding::moment(m_handlers.report().updatedAt);
}

// With the message as its parameter it is called whatever the arguments are.
void StatusAdaptor::Refresh(const QDBusMessage& message)
{
    if (!message.arguments().isEmpty())
        refuse(message, QDBusError::errorString(QDBusError::InvalidArgs),
               QStringLiteral("Refresh takes no arguments."));
    else if (!m_handlers.refresh())
        refuse(message, QLatin1String(tooSoon),
               QStringLiteral("A refresh was asked for just before."));
}

void StatusAdaptor::refuse(const QDBusMessage& message, const QString& error, const QString& why)
{
    message.setDelayedReply(true);
    m_bus.send(message.createErrorReply(error, why));
}

} // namespace vellumor
