#pragma once

#include <QDBusConnection>
#include <QDBusMessage>

#include <functional>

class QObject;

// Calls on the bus that hold nobody up.
namespace vellumor::BusCall {

// Sends `call`, and gives the answer or the error on the context's thread, unless `context` is gone
// by then. Milliseconds; -1 for the library's own limit.
void send(const QDBusConnection& bus, const QDBusMessage& call, QObject* context,
          std::function<void(const QDBusMessage& answer)> then, int timeout = -1);

// A method of the bus itself.
[[nodiscard]] QDBusMessage ofBus(const QString& method, const QVariantList& arguments);

// Calls `slot` of `receiver` when `name` gets or loses its owner. The slot takes the QDBusMessage.
// Every sender's message gets through, since to tell them apart the library would ask the bus and
// wait: the receiver looks with `isFromBus`.
bool watchOwner(QDBusConnection bus, const QString& name, QObject* receiver, const char* slot);
[[nodiscard]] bool isFromBus(const QDBusMessage& message);

} // namespace vellumor::BusCall
