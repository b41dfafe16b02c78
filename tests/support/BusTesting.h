#pragma once

#include "support/ProcessTesting.h"
#include "support/TempFolder.h"
#include "support/private_bus/PrivateBus.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCall>
#include <QDBusVariant>

#include <gtest/gtest.h>

#include <string>

namespace vellumor::test {

// A bus of the test's own. What is called lives in the test's own thread, so every call lets the
// event loop turn.
struct BusTest : testing::Test {
    explicit BusTest(const PrivateBus::Options& options = {})
        : bus(folder.makeFolder("bus"), options)
    {
    }
    ~BusTest() override
    {
        QDBusConnection::disconnectFromBus(client.name());
        QDBusConnection::disconnectFromBus(server.name());
    }

    // Objects are on one connection and calls come from another, since a call to oneself does not
    // take the way over the bus.
    QString serve(const char* path, QObject* object)
    {
        server.registerObject(QLatin1String(path), object,
                              QDBusConnection::ExportAllProperties |
                                  QDBusConnection::ExportScriptableSlots |
                                  QDBusConnection::ExportScriptableSignals);
        return server.baseService();
    }

    QDBusMessage answerTo(const QDBusMessage& message)
    {
        const QDBusPendingCall call = client.asyncCall(message);
        EXPECT_TRUE(turnLoopUntil([&] { return call.isFinished(); }));
        return call.reply();
    }
    QDBusMessage call(const QString& service, const char* path, const char* interface,
                      const char* method, const QVariantList& arguments = {})
    {
        auto message = QDBusMessage::createMethodCall(
            service, QLatin1String(path), QLatin1String(interface), QLatin1String(method));
        message.setArguments(arguments);
        return answerTo(message);
    }
    QVariantMap properties(const QString& service, const char* path, const char* interface)
    {
        const auto answer = call(service, path, "org.freedesktop.DBus.Properties", "GetAll",
                                 {QString::fromLatin1(interface)});
        return qdbus_cast<QVariantMap>(answer.arguments().value(0));
    }
    // Everything that was sent before this is delivered when it returns.
    void settle(const QString& service) { call(service, "/", "org.freedesktop.DBus.Peer", "Ping"); }

    TempFolder folder;
    PrivateBus bus;
    QDBusConnection client = connection("client");
    QDBusConnection server = connection("server");

private:
    [[nodiscard]] QDBusConnection connection(const char* name) const
    {
        const auto address = QString::fromStdString(bus.address());
        return QDBusConnection::connectToBus(address, QLatin1String(name) + address);
    }
};

// How a value stood on the bus: its signature.
inline std::string signatureOf(const QVariant& value)
{
    if (value.metaType() == QMetaType::fromType<QDBusArgument>())
        return value.value<QDBusArgument>().currentSignature().toStdString();
    return QDBusMetaType::typeToSignature(value.metaType());
}

} // namespace vellumor::test
