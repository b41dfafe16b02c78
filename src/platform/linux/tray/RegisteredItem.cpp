#include "platform/linux/tray/RegisteredItem.h"

#include "async/OrEnd.h"
#include "platform/linux/BusCall.h"
#include "platform/linux/tray/TrayWatcher.h"

#include <unistd.h>

#include <utility>

namespace vellumor {

namespace {

constexpr uint doNotQueue = 4; // DBUS_NAME_FLAG_DO_NOT_QUEUE

// Joining a bus waits for its answer.
void join(const std::string& address, const QString& connectionName)
{
    if (address.empty())
        QDBusConnection::connectToBus(QDBusConnection::SessionBus, connectionName);
    else
        QDBusConnection::connectToBus(QString::fromStdString(address), connectionName);
}

} // namespace

RegisteredItem::RegisteredItem(Worker& worker, Identity identity, StatusMenu& menu,
                               StatusNotifierItem::OnClick onClick)
    : m_worker(worker)
    , m_identity(std::move(identity))
    , m_menu(menu)
    , m_item(m_identity.id, std::move(onClick))
    , m_connectionName(QStringLiteral("vellumor-item-%1-%2")
                           .arg(reinterpret_cast<quintptr>(this))
                           .arg(m_identity.number))
    , m_busName(
          QStringLiteral("org.kde.StatusNotifierItem-%1-%2").arg(::getpid()).arg(m_identity.number))
{
}

RegisteredItem::~RegisteredItem()
{
    if (m_isOpen)
        QDBusConnection::disconnectFromBus(m_connectionName);
}

void RegisteredItem::registerWith(const QString& owner, std::function<void()> then)
{
    m_owner = owner;
    m_then = std::move(then);
    if (m_isOpen)
        callWatcher();
    else
        m_opening = orEnd(open(this, m_worker));
}

Task<> RegisteredItem::open(QPointer<RegisteredItem> self, Worker& worker)
{
    const QString name = self->m_connectionName;
    auto joining = [address = self->m_identity.busAddress, name] { join(address, name); };
    co_await worker.run(std::move(joining));
    if (!self) {
        QDBusConnection::disconnectFromBus(name);
        co_return;
    }
    self->m_isOpen = true;
    self->exportObjects();
    self->askForName();
}

void RegisteredItem::exportObjects()
{
    QDBusConnection bus(m_connectionName);
    const auto all = QDBusConnection::ExportAllProperties | QDBusConnection::ExportScriptableSlots |
                     QDBusConnection::ExportScriptableSignals;
    bus.registerObject(QLatin1String(StatusNotifierItem::objectPath), &m_item, all);
    bus.registerObject(QLatin1String(StatusNotifierItem::menuPath), &m_menu, all);
}

void RegisteredItem::askForName()
{
    BusCall::send(QDBusConnection(m_connectionName),
                  BusCall::ofBus(QStringLiteral("RequestName"), {m_busName, doNotQueue}), this,
                  [this](const QDBusMessage&) { callWatcher(); });
}

void RegisteredItem::callWatcher()
{
    auto call = QDBusMessage::createMethodCall(
        TrayWatcher::busName(), QStringLiteral("/StatusNotifierWatcher"), TrayWatcher::busName(),
        QStringLiteral("RegisterStatusNotifierItem"));
    call.setArguments({m_busName});
    call.setAutoStartService(false);
    BusCall::send(QDBusConnection(m_connectionName), call, this,
                  [this](const QDBusMessage&) { std::exchange(m_then, nullptr)(); });
}

} // namespace vellumor
