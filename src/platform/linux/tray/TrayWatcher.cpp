#include "platform/linux/tray/TrayWatcher.h"

#include "async/OrEnd.h"
#include "platform/linux/BusCall.h"

#include <fstream>
#include <string>

namespace vellumor {

namespace {

// Empty when it has ended.
std::string nameOfProcess(uint process)
{
    std::ifstream file("/proc/" + std::to_string(process) + "/comm");
    std::string name;
    std::getline(file, name);
    return name;
}

} // namespace

TrayWatcher::TrayWatcher(Worker& worker, QDBusConnection bus)
    : m_worker(worker)
    , m_bus(std::move(bus))
{
}

QString TrayWatcher::busName()
{
    return QStringLiteral("org.kde.StatusNotifierWatcher");
}

void TrayWatcher::start(std::function<void()> onChange)
{
    m_onChange = std::move(onChange);
    if (!m_bus.isConnected())
        return;
    BusCall::watchOwner(m_bus, busName(), this, SLOT(onOwnerChanged(QDBusMessage)));
    m_bus.connect(QString(), QStringLiteral("/org/freedesktop/DBus/Local"),
                  QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected"),
                  this, SLOT(onBusLost()));
    BusCall::send(m_bus, BusCall::ofBus(QStringLiteral("GetNameOwner"), {busName()}), this,
                  [this](const QDBusMessage& answer) {
                      if (answer.type() == QDBusMessage::ReplyMessage)
                          lookAt(answer.arguments().value(0).toString());
                  });
}

void TrayWatcher::onOwnerChanged(const QDBusMessage& message)
{
    if (BusCall::isFromBus(message))
        lookAt(message.arguments().value(2).toString());
}

void TrayWatcher::onBusLost()
{
    lookAt({});
}

void TrayWatcher::lookAt(const QString& owner)
{
    if (owner == m_owner)
        return;
    m_owner = owner;
    take(std::nullopt);
    if (!owner.isEmpty())
        askForProcess();
}

void TrayWatcher::askForProcess()
{
    auto question = BusCall::ofBus(QStringLiteral("GetConnectionUnixProcessID"), {m_owner});
    BusCall::send(m_bus, question, this, [this, owner = m_owner](const QDBusMessage& answer) {
        const uint process = answer.arguments().value(0).toUInt();
        m_judging = orEnd(judge(this, m_worker, owner, process));
    });
}

Task<> TrayWatcher::judge(QPointer<TrayWatcher> self, Worker& worker, QString owner, uint process)
{
    auto look = [process] { return ItemLayout::hostOf(nameOfProcess(process)); };
    const auto host = co_await worker.run(std::move(look));
    if (self && self->m_owner == owner)
        self->take(Found{owner, host});
}

void TrayWatcher::take(std::optional<Found> found)
{
    if (found == m_found)
        return;
    m_found = std::move(found);
    m_onChange();
}

} // namespace vellumor
