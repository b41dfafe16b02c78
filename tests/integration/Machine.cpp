#include "integration/Machine.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusReply>

#include <csignal>
#include <stdexcept>

namespace vellumor::test {

namespace {

const auto logindName = QStringLiteral("org.freedesktop.login1");
const auto networkName = QStringLiteral("org.freedesktop.NetworkManager");
const auto mockInterface = QStringLiteral("org.freedesktop.DBus.Mock");

} // namespace

Machine::Machine(const std::string& folder)
    : m_bus(folder)
    , m_logind(play("logind"))
    , m_networkManager(play("networkmanager"))
    , m_connectionName(QString::fromStdString("test " + folder))
    , m_connection(
          QDBusConnection::connectToBus(QString::fromStdString(m_bus.address()), m_connectionName))
{
    m_bus.waitFor(logindName.toStdString());
    m_bus.waitFor(networkName.toStdString());
}

Machine::~Machine()
{
    QDBusConnection::disconnectFromBus(m_connectionName);
}

void Machine::setNetwork(Network state) const
{
    auto message = QDBusMessage::createMethodCall(
        networkName, QStringLiteral("/org/freedesktop/NetworkManager"), mockInterface,
        QStringLiteral("SetGlobalConnectionState"));
    message << static_cast<uint>(state);
    call(message);
}

void Machine::hangNetworkManager() const
{
    ::kill(m_networkManager->pid(), SIGSTOP);
}

bool Machine::isListenedTo() const
{
    const std::string rules = m_bus.call("org.freedesktop.DBus", "/org/freedesktop/DBus",
                                         "org.freedesktop.DBus.Debug.Stats.GetAllMatchRules");
    return rules.find("member='PrepareForSleep'") != std::string::npos &&
           rules.find("path='/org/freedesktop/NetworkManager'") != std::string::npos;
}

void Machine::waitUntilHeardBy(pid_t process) const
{
    auto* const daemon = m_connection.interface();
    const QStringList names = daemon->registeredServiceNames();
    for (const QString& name : names) {
        if (!name.startsWith(u':') || static_cast<pid_t>(daemon->servicePid(name)) != process)
            continue;
        call(QDBusMessage::createMethodCall(name, QStringLiteral("/"),
                                            QStringLiteral("org.freedesktop.DBus.Peer"),
                                            QStringLiteral("Ping")));
    }
}

std::unique_ptr<ChildProcess> Machine::play(const std::string& service) const
{
    return std::make_unique<ChildProcess>(m_bus.command(
        {"/usr/bin/python3", "-m", "dbusmock", "--session", "--template", service}, service));
}

void Machine::tellOfSleep(bool isBeginning) const
{
    auto message =
        QDBusMessage::createMethodCall(logindName, QStringLiteral("/org/freedesktop/login1"),
                                       mockInterface, QStringLiteral("EmitSignal"));
    message << QStringLiteral("org.freedesktop.login1.Manager") << QStringLiteral("PrepareForSleep")
            << QStringLiteral("b") << QVariant(QVariantList{isBeginning});
    call(message);
}

void Machine::call(const QDBusMessage& message) const
{
    const QDBusMessage reply = m_connection.call(message);
    if (reply.type() != QDBusMessage::ReplyMessage)
        throw std::runtime_error("the machine of the test: " + reply.errorMessage().toStdString());
}

} // namespace vellumor::test
