#include "platform/linux/FreedesktopNotifications.h"

#include "platform/linux/BusCall.h"

#include <QDBusMessage>
#include <QVariantMap>

namespace vellumor {

namespace {

const auto server = QStringLiteral("org.freedesktop.Notifications");
const auto serverPath = QStringLiteral("/org/freedesktop/Notifications");
const auto defaultAction = QStringLiteral("default");
constexpr int askTimeoutMs = 2000;
constexpr int serversChoice = -1;      // of how long it is shown
constexpr std::size_t mostShown = 256; // a server that tells of no closing must not fill the memory

QDBusMessage method(const QString& name, const QVariantList& arguments = {})
{
    auto call = QDBusMessage::createMethodCall(server, serverPath, server, name);
    call.setArguments(arguments);
    return call;
}

bool isAnswer(const QDBusMessage& message)
{
    return message.type() == QDBusMessage::ReplyMessage;
}

QVariantMap hints()
{
    return {{QStringLiteral("desktop-entry"), QStringLiteral("dev.quorle.vellumor")},
            {QStringLiteral("sound-name"), QStringLiteral("message-new-instant")}};
}

} // namespace

FreedesktopNotifications::FreedesktopNotifications(QDBusConnection bus)
    : m_bus(std::move(bus))
{
}

void FreedesktopNotifications::onOpen(
    std::function<void(const std::string& activationToken)> handler)
{
    m_onOpen = std::move(handler);
    // From anybody: to know the server's own, the library would ask the bus and wait; and all that
    // a stranger can do is to open the popover, which the bus lets everybody do.
    const auto listen = [this](const char* signal, const char* slot) {
        m_bus.connect(QString(), serverPath, server, QString::fromLatin1(signal), this, slot);
    };
    listen("ActionInvoked", SLOT(onActionInvoked(uint, QString)));
    listen("ActivationToken", SLOT(onActivationToken(uint, QString)));
    listen("NotificationClosed", SLOT(onClosed(uint, uint)));
}

// Servers differ in whether they read the body as markup, and may be exchanged at any time, so each
// is asked before.
void FreedesktopNotifications::deliver(const std::string& title, const std::string& body)
{
    if (!m_bus.isConnected())
        return;
    BusCall::send(m_bus, method(QStringLiteral("GetCapabilities")), this,
                  [this, title = QString::fromStdString(title),
                   body = QString::fromStdString(body)](const QDBusMessage& answer) {
                      if (!isAnswer(answer))
                          return;
                      const auto capabilities = answer.arguments().value(0).toStringList();
                      const bool hasMarkup = capabilities.contains(QStringLiteral("body-markup"));
                      send(title, hasMarkup ? body.toHtmlEscaped() : body);
                  });
}

// The action has a readable name, since some servers show it as a button.
void FreedesktopNotifications::send(const QString& title, const QString& body)
{
    const QStringList actions{defaultAction, QStringLiteral("Open")};
    const QVariantList arguments{QStringLiteral("Vellumor"),
                                 0U, // replaces none
                                 QStringLiteral("dev.quorle.vellumor"),
                                 title,
                                 body,
                                 actions,
                                 hints(),
                                 serversChoice};
    BusCall::send(m_bus, method(QStringLiteral("Notify"), arguments), this,
                  [this](const QDBusMessage& answer) {
                      if (!isAnswer(answer))
                          return;
                      if (m_shown.size() >= mostShown)
                          m_shown.erase(m_shown.begin());
                      m_shown.insert_or_assign(answer.arguments().value(0).toUInt(), QString());
                  });
}

void FreedesktopNotifications::onActivationToken(uint id, const QString& token)
{
    const auto shown = m_shown.find(id);
    if (shown != m_shown.end())
        shown->second = token;
}

void FreedesktopNotifications::onActionInvoked(uint id, const QString& action)
{
    const auto shown = m_shown.find(id);
    if (shown == m_shown.end() || action != defaultAction)
        return;
    m_onOpen(shown->second.toStdString());
}

void FreedesktopNotifications::onClosed(uint id, uint)
{
    m_shown.erase(id);
}

void FreedesktopNotifications::requestAuthorization(std::function<void(Authorization)> then)
{
    if (!m_bus.isConnected()) {
        QMetaObject::invokeMethod(
            this, [then = std::move(then)] { then(Authorization::denied); }, Qt::QueuedConnection);
        return;
    }
    BusCall::send(
        m_bus, BusCall::ofBus(QStringLiteral("NameHasOwner"), {server}), this,
        [this, then = std::move(then)](const QDBusMessage& answer) {
            if (isAnswer(answer) && answer.arguments().value(0).toBool())
                then(Authorization::authorized);
            else
                askWhoCanBeStarted(then);
        },
        askTimeoutMs);
}

void FreedesktopNotifications::askWhoCanBeStarted(std::function<void(Authorization)> then)
{
    BusCall::send(
        m_bus, BusCall::ofBus(QStringLiteral("ListActivatableNames"), {}), this,
        [then = std::move(then)](const QDBusMessage& answer) {
            const auto names = answer.arguments().value(0).toStringList();
            then(isAnswer(answer) && names.contains(server) ? Authorization::authorized
                                                            : Authorization::denied);
        },
        askTimeoutMs);
}

} // namespace vellumor
