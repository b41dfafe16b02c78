#include "platform/linux/BusCall.h"

#include <QDBusPendingCallWatcher>

namespace vellumor::BusCall {

namespace {

const auto busName = QStringLiteral("org.freedesktop.DBus");
const auto busPath = QStringLiteral("/org/freedesktop/DBus");

} // namespace

void send(const QDBusConnection& bus, const QDBusMessage& call, QObject* context,
          std::function<void(const QDBusMessage& answer)> then, int timeout)
{
    auto* const waiting = new QDBusPendingCallWatcher(bus.asyncCall(call, timeout), context);
    QObject::connect(waiting, &QDBusPendingCallWatcher::finished, context,
                     [waiting, then = std::move(then)] {
                         waiting->deleteLater();
                         then(waiting->reply());
                     });
}

QDBusMessage ofBus(const QString& method, const QVariantList& arguments)
{
    auto call = QDBusMessage::createMethodCall(busName, busPath, busName, method);
    call.setArguments(arguments);
    return call;
}

bool watchOwner(QDBusConnection bus, const QString& name, QObject* receiver, const char* slot)
{
    return bus.connect(QString(), busPath, busName, QStringLiteral("NameOwnerChanged"), {name},
                       QString(), receiver, slot);
}

bool isFromBus(const QDBusMessage& message)
{
    return message.service() == busName;
}

} // namespace vellumor::BusCall
