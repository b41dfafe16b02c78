#include "platform/linux/SingleCopy.h"

#include "base/Log.h"
#include "platform/linux/ApplicationObject.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusReply>
#include <QDeadlineTimer>
#include <QThread>

namespace vellumor {

namespace {

const auto busName = QStringLiteral("dev.quorle.vellumor");
const auto objectPath = QStringLiteral("/dev/quorle/vellumor");
constexpr int callTimeoutMs = 2000;
constexpr int nameWaitMs = 2000; // the copy that came first may not be on the bus yet
constexpr int nameWaitStepMs = 50;

// 0 where the bus does not tell.
std::optional<int> ownerOnBus()
{
    auto bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return std::nullopt;
    bus.interface()->setTimeout(callTimeoutMs);
    if (!bus.interface()->isServiceRegistered(busName))
        return std::nullopt;
    const QDBusReply<uint> pid = bus.interface()->servicePid(busName);
    return pid.isValid() ? static_cast<int>(pid.value()) : 0;
}

void waitForOwner()
{
    const QDeadlineTimer limit(nameWaitMs);
    while (!limit.hasExpired() && !ownerOnBus())
        QThread::msleep(nameWaitStepMs);
}

} // namespace

SingleCopy::SingleCopy(const FileStore& files, std::string lockPath, const Environment& environment)
    : m_lock(files, std::move(lockPath))
    , m_activationToken(value(environment, "XDG_ACTIVATION_TOKEN").value_or(""))
{
}

SingleCopy::~SingleCopy() = default;

std::optional<int> SingleCopy::otherCopy()
{
    const auto owner = ownerOnBus();
    if (owner && *owner != 0)
        return owner;
    const auto holder = m_lock.holder();
    return holder ? holder : owner;
}

std::optional<int>
SingleCopy::claim(std::function<void(const std::string& activationToken)> onActivate)
{
    const auto locked = m_lock.acquire();
    if (locked == InstanceLock::Result::taken)
        return otherCopy().value_or(0);
    if (locked == InstanceLock::Result::unavailable)
        log(Tag::main, "the lock file cannot be made — running without it");
    auto bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        log(Tag::main, "no session bus — a second start cannot be handed over");
        return std::nullopt;
    }
    // The object stands before the name, so that whoever sees the name can call it.
    m_object = std::make_unique<ApplicationObject>(std::move(onActivate));
    bus.registerObject(objectPath, m_object.get(),
                       QDBusConnection::ExportScriptableSlots | QDBusConnection::ExportAdaptors);
    if (bus.registerService(busName))
        return std::nullopt;
    bus.unregisterObject(objectPath);
    const auto owner = ownerOnBus();
    if (owner)
        m_lock.release();
    else
        log(Tag::main, "the session bus refuses its name — a second start cannot be handed over");
    return owner;
}

void SingleCopy::activateOther()
{
    auto bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return;
    waitForOwner();
    if (!ownerOnBus())
        return; // it has no bus, or has just ended
    auto call = QDBusMessage::createMethodCall(busName, objectPath,
                                               QStringLiteral("org.freedesktop.Application"),
                                               QStringLiteral("Activate"));
    call.setAutoStartService(false);
    QVariantMap platformData;
    if (!m_activationToken.empty())
        platformData.insert(QStringLiteral("activation-token"),
                            QString::fromStdString(m_activationToken));
    call << platformData;
    bus.call(call, QDBus::Block, callTimeoutMs);
}

} // namespace vellumor
