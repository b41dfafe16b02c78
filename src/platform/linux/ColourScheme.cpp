#include "platform/linux/ColourScheme.h"

#include "platform/linux/BusCall.h"

#include <QDBusVariant>

namespace vellumor {

namespace {

const auto portal = QStringLiteral("org.freedesktop.portal.Desktop");
const auto portalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const auto settings = QStringLiteral("org.freedesktop.portal.Settings");
const auto appearance = QStringLiteral("org.freedesktop.appearance");
const auto colourScheme = QStringLiteral("color-scheme");
constexpr uint dark = 1;
constexpr uint light = 2;

// Read wraps what it gives once more than it is said to; some portals do not.
std::optional<bool> prefersDarkIn(QVariant value)
{
    while (value.canConvert<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    if (value.typeId() != QMetaType::UInt)
        return std::nullopt;
    if (value.toUInt() == dark)
        return true;
    return value.toUInt() == light ? std::optional(false) : std::nullopt;
}

} // namespace

ColourScheme::ColourScheme(QDBusConnection bus)
    : m_bus(std::move(bus))
{
}

void ColourScheme::start(std::function<void()> onChange)
{
    m_onChange = std::move(onChange);
    if (!m_bus.isConnected())
        return;
    m_bus.connect(QString(), portalPath, settings, QStringLiteral("SettingChanged"),
                  {appearance, colourScheme}, QString(), this,
                  SLOT(onSettingChanged(QDBusMessage)));
    BusCall::watchOwner(m_bus, portal, this, SLOT(onOwnerChanged(QDBusMessage)));
    ask();
}

// Anybody can send this, so the value is asked of the portal itself.
void ColourScheme::onSettingChanged(const QDBusMessage&)
{
    ask();
}

// One that has gone is not asked, which would only start it again.
void ColourScheme::onOwnerChanged(const QDBusMessage& message)
{
    if (BusCall::isFromBus(message) && !message.arguments().value(2).toString().isEmpty())
        ask();
}

void ColourScheme::ask()
{
    auto call =
        QDBusMessage::createMethodCall(portal, portalPath, settings, QStringLiteral("Read"));
    call.setArguments({appearance, colourScheme});
    BusCall::send(m_bus, call, this, [this](const QDBusMessage& answer) {
        take(answer.type() == QDBusMessage::ReplyMessage
                 ? prefersDarkIn(answer.arguments().value(0))
                 : std::nullopt);
    });
}

void ColourScheme::take(std::optional<bool> prefersDark)
{
    if (prefersDark == m_prefersDark)
        return;
    m_prefersDark = prefersDark;
    m_onChange();
}

} // namespace vellumor
