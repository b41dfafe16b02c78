#include "platform/linux/LogindSleepWatcher.h"

#include "base/Log.h"

#include <QDBusConnection>

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

QString connectionName(const LogindSleepWatcher* watcher)
{
    return QStringLiteral("vellumor-sleep-%1").arg(reinterpret_cast<quintptr>(watcher));
}

} // namespace

LogindSleepWatcher::LogindSleepWatcher(std::string busAddress, Clock& clock,
                                       std::function<Uptime()> uptime)
    : m_busAddress(std::move(busAddress))
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
    if (listen())
        return;
    log(Tag::poller, "no system bus — a sleep is noticed by its length only");
    const Uptime now = m_uptime();
    m_slept = now.withSleep - now.withoutSleep;
    m_nextLook = m_clock.after(lookInterval, [this] { lookAtClocks(); });
}

// The match stands whether or not logind is there yet, so nothing is asked and nobody waited for.
bool LogindSleepWatcher::listen()
{
    const auto name = connectionName(this);
    auto bus = m_busAddress.empty()
                   ? QDBusConnection::connectToBus(QDBusConnection::SystemBus, name)
                   : QDBusConnection::connectToBus(QString::fromStdString(m_busAddress), name);
    return bus.isConnected() &&
           bus.connect(QStringLiteral("org.freedesktop.login1"),
                       QStringLiteral("/org/freedesktop/login1"),
                       QStringLiteral("org.freedesktop.login1.Manager"),
                       QStringLiteral("PrepareForSleep"), this, SLOT(onPrepareForSleep(bool)));
}

void LogindSleepWatcher::onPrepareForSleep(bool isBeginning)
{
    if (isBeginning)
        m_willSleep();
    else
        m_didWake();
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
