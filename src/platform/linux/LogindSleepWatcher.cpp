#include "platform/linux/LogindSleepWatcher.h"

#include "async/OrEnd.h"
#include "base/Log.h"
#include "platform/linux/SystemBus.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

#include <ctime>

namespace vellumor {

namespace {

constexpr std::chrono::seconds lookInterval{30};
constexpr std::chrono::seconds leastSleep{30};

std::chrono::milliseconds timeOf(clockid_t clock)
{
    timespec time{};
    ::clock_gettime(clock, &time);
    return std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec));
}

const auto logindName = QStringLiteral("org.freedesktop.login1");
const auto busName = QStringLiteral("org.freedesktop.DBus");

QString connectionName(const LogindSleepWatcher* watcher)
{
    return QStringLiteral("vellumor-sleep-%1").arg(reinterpret_cast<quintptr>(watcher));
}

} // namespace

LogindSleepWatcher::LogindSleepWatcher(Worker& worker, std::string busAddress, Clock& clock,
                                       std::function<Uptime()> uptime)
    : m_worker(worker)
    , m_busAddress(std::move(busAddress))
    , m_clock(clock)
    , m_uptime(std::move(uptime))
{
}

LogindSleepWatcher::~LogindSleepWatcher()
{
    QDBusConnection::disconnectFromBus(connectionName(this));
}

LogindSleepWatcher::Uptime LogindSleepWatcher::systemUptime()
{
    return {timeOf(CLOCK_BOOTTIME), timeOf(CLOCK_MONOTONIC)};
}

void LogindSleepWatcher::start(std::function<void()> willSleep, std::function<void()> didWake)
{
    m_willSleep = std::move(willSleep);
    m_didWake = std::move(didWake);
    m_begun = orEnd(begin(this, m_worker));
}

Task<> LogindSleepWatcher::begin(QPointer<LogindSleepWatcher> self, Worker& worker)
{
    auto look = [address = self->m_busAddress] { return SystemBus::isSilent(address); };
    const bool isSilent = co_await worker.run(std::move(look));
    if (!self)
        co_return;
    if (!isSilent && self->listen()) {
        self->askForLogind();
        co_return;
    }
    log(Tag::poller, "no system bus — a sleep is noticed by its length only");
    self->relyOnLogind(false);
}

// The match stands whether or not logind is there yet.
bool LogindSleepWatcher::listen()
{
    const auto name = connectionName(this);
    auto bus = m_busAddress.empty()
                   ? QDBusConnection::connectToBus(QDBusConnection::SystemBus, name)
                   : QDBusConnection::connectToBus(QString::fromStdString(m_busAddress), name);
    return bus.isConnected() &&
           bus.connect(logindName, QStringLiteral("/org/freedesktop/login1"),
                       QStringLiteral("org.freedesktop.login1.Manager"),
                       QStringLiteral("PrepareForSleep"), this, SLOT(onPrepareForSleep(bool))) &&
           bus.connect(busName, QStringLiteral("/org/freedesktop/DBus"), busName,
                       QStringLiteral("NameOwnerChanged"), {logindName}, QString(), this,
                       SLOT(onOwnerChanged(QString, QString, QString))) &&
           bus.connect(QString(), QStringLiteral("/org/freedesktop/DBus/Local"),
                       QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected"),
                       this, SLOT(onBusLost()));
}

void LogindSleepWatcher::askForLogind()
{
    auto question = QDBusMessage::createMethodCall(busName, QStringLiteral("/org/freedesktop/DBus"),
                                                   busName, QStringLiteral("NameHasOwner"));
    question.setArguments({logindName});
    auto* const waiting = new QDBusPendingCallWatcher(
        QDBusConnection(connectionName(this)).asyncCall(question), this);
    connect(waiting, &QDBusPendingCallWatcher::finished, this, [this, waiting] {
        const QDBusPendingReply<bool> isThere = *waiting;
        waiting->deleteLater();
        relyOnLogind(!isThere.isError() && isThere.value());
    });
}

// Nothing runs as long as there is somebody who tells.
void LogindSleepWatcher::relyOnLogind(bool isThere)
{
    m_nextLook.reset();
    if (isThere)
        return;
    const Uptime now = m_uptime();
    m_slept = now.withSleep - now.withoutSleep;
    m_nextLook = m_clock.after(lookInterval, [this] { lookAtClocks(); });
}

void LogindSleepWatcher::onPrepareForSleep(bool isBeginning)
{
    m_isGoingToSleep = isBeginning;
    if (isBeginning)
        m_willSleep();
    else
        m_didWake();
}

void LogindSleepWatcher::onOwnerChanged(const QString&, const QString&, const QString& now)
{
    relyOnLogind(!now.isEmpty());
    if (m_isGoingToSleep) // nobody is left who would tell its end
        onPrepareForSleep(false);
}

void LogindSleepWatcher::onBusLost()
{
    onOwnerChanged({}, {}, {});
}

void LogindSleepWatcher::lookAtClocks()
{
    const Uptime now = m_uptime();
    const auto slept = now.withSleep - now.withoutSleep;
    const bool hasSlept = slept - m_slept > leastSleep;
    m_slept = slept;
    m_nextLook = m_clock.after(lookInterval, [this] { lookAtClocks(); });
    if (hasSlept)
        m_didWake();
}

} // namespace vellumor
