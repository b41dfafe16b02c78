#include "platform/linux/FreedesktopNotifications.h"

#include "platform/linux/BusCall.h"

#include <QDBusMessage>
#include <QDeadlineTimer>
#include <QVariantMap>

#include <algorithm>

namespace vellumor {

namespace {

const auto serverName = QStringLiteral("org.freedesktop.Notifications");
const auto serverPath = QStringLiteral("/org/freedesktop/Notifications");
const auto defaultAction = QStringLiteral("default");
constexpr int askTimeoutMs = 2000;
constexpr int serversChoice = -1;      // of how long it is shown
constexpr std::size_t mostShown = 256; // a server that tells of no closing must not fill the memory

QDBusMessage method(const QString& name, const QVariantList& arguments = {})
{
    auto call = QDBusMessage::createMethodCall(serverName, serverPath, serverName, name);
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

FreedesktopNotifications::FreedesktopNotifications(QDBusConnection bus,
                                                   std::chrono::milliseconds answerLimit)
    : m_bus(std::move(bus))
    , m_answerLimit(static_cast<int>(answerLimit.count()))
{
}

void FreedesktopNotifications::onOpen(
    std::function<void(const std::string& activationToken)> handler)
{
    m_onOpen = std::move(handler);
    // From anybody, since to know the server's own the library would ask the bus and wait: who has
    // sent it is looked at when it comes.
    const auto listen = [this](const char* signal, const char* slot) {
        m_bus.connect(QString(), serverPath, serverName, QString::fromLatin1(signal), this, slot);
    };
    listen("ActionInvoked", SLOT(onActionInvoked(uint, QString, QDBusMessage)));
    listen("ActivationToken", SLOT(onActivationToken(uint, QString, QDBusMessage)));
    listen("NotificationClosed", SLOT(onClosed(uint, uint, QDBusMessage)));
}

void FreedesktopNotifications::ask(const QDBusMessage& call,
                                   std::function<void(const QDBusMessage& answer)> then)
{
    BusCall::send(
        m_bus, call, this,
        [then = std::move(then)](const QDBusMessage& answer) {
            if (isAnswer(answer))
                then(answer);
        },
        m_answerLimit);
}

// Servers differ in whether they read the body as markup, and may be exchanged at any time, so each
// is asked before.
void FreedesktopNotifications::deliver(const std::string& title, const std::string& body)
{
    if (!m_bus.isConnected())
        return;
    ask(method(QStringLiteral("GetCapabilities")),
        [this, title = QString::fromStdString(title),
         body = QString::fromStdString(body)](const QDBusMessage& answer) {
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
    ask(method(QStringLiteral("Notify"), arguments), [this](const QDBusMessage& answer) {
        remember(answer.service(), answer.arguments().value(0).toUInt());
    });
}

void FreedesktopNotifications::remember(const QString& server, uint id)
{
    forget(server, id); // a server that uses it again has not told of the closing
    if (m_shown.size() >= mostShown)
        m_shown.pop_front();
    m_shown.push_back({server, id, {}});
}

void FreedesktopNotifications::forget(const QString& server, uint id)
{
    std::erase_if(m_shown,
                  [&](const Shown& shown) { return shown.id == id && shown.server == server; });
}

FreedesktopNotifications::Shown* FreedesktopNotifications::shownBy(const QString& server, uint id)
{
    const auto found = std::find_if(m_shown.begin(), m_shown.end(), [&](const Shown& shown) {
        return shown.id == id && shown.server == server;
    });
    return found == m_shown.end() ? nullptr : &*found;
}

void FreedesktopNotifications::onActivationToken(uint id, const QString& token,
                                                 const QDBusMessage& message)
{
    if (Shown* const shown = shownBy(message.service(), id))
        shown->activationToken = token;
}

void FreedesktopNotifications::onActionInvoked(uint id, const QString& action,
                                               const QDBusMessage& message)
{
    const Shown* const shown = shownBy(message.service(), id);
    if (shown && action == defaultAction)
        m_onOpen(shown->activationToken.toStdString());
}

void FreedesktopNotifications::onClosed(uint id, uint, const QDBusMessage& message)
{
    forget(message.service(), id);
}

void FreedesktopNotifications::requestAuthorization(std::function<void(Authorization)> then)
{
    if (!m_bus.isConnected()) {
        QMetaObject::invokeMethod(
            this, [then = std::move(then)] { then(Authorization::denied); }, Qt::QueuedConnection);
        return;
    }
    BusCall::send(
        m_bus, BusCall::ofBus(QStringLiteral("NameHasOwner"), {serverName}), this,
        [this, then = std::move(then),
         deadline = QDeadlineTimer(askTimeoutMs)](const QDBusMessage& answer) {
            if (isAnswer(answer) && answer.arguments().value(0).toBool())
                then(Authorization::authorized);
            else // within what is left of the time: the user is waiting for the switch
                askWhoCanBeStarted(then, static_cast<int>(deadline.remainingTime()));
        },
        askTimeoutMs);
}

void FreedesktopNotifications::askWhoCanBeStarted(std::function<void(Authorization)> then,
                                                  int timeout)
{
    BusCall::send(
        m_bus, BusCall::ofBus(QStringLiteral("ListActivatableNames"), {}), this,
        [then = std::move(then)](const QDBusMessage& answer) {
            const auto names = answer.arguments().value(0).toStringList();
            then(isAnswer(answer) && names.contains(serverName) ? Authorization::authorized
                                                                : Authorization::denied);
        },
        timeout);
}

} // namespace vellumor
