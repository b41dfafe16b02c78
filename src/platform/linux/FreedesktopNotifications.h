#pragma once

#include "platform/Notifications.h"

#include <QDBusConnection>
#include <QObject>

#include <chrono>
#include <deque>

class QDBusMessage;

namespace vellumor {

// Notifications on org.freedesktop.Notifications. A server that is installed is started by the bus
// when it is needed; one that hangs, or none, costs the notification and nothing else.
class FreedesktopNotifications final : public QObject, public Notifications {
    Q_OBJECT

public:
    // `answerLimit`: after so long without an answer, the server is not waited for any more.
    explicit FreedesktopNotifications(
        QDBusConnection bus = QDBusConnection::sessionBus(),
        std::chrono::milliseconds answerLimit = std::chrono::seconds(25));

    void deliver(const std::string& title, const std::string& body) override;
    void requestAuthorization(std::function<void(Authorization)> then) override;
    void onOpen(std::function<void(const std::string& activationToken)> handler) override;

private Q_SLOTS:
    void onActionInvoked(uint id, const QString& action, const QDBusMessage& message);
    void onActivationToken(uint id, const QString& token, const QDBusMessage& message);
    void onClosed(uint id, uint reason, const QDBusMessage& message);

private:
    // One that is on the screen. Each server counts for itself, so an id is worth nothing without
    // the server's own name on the bus.
    struct Shown {
        QString server;
        uint id;
        QString activationToken;
    };

    void ask(const QDBusMessage& call, std::function<void(const QDBusMessage& answer)> then);
    void send(const QString& title, const QString& body);
    void remember(const QString& server, uint id);
    void forget(const QString& server, uint id);
    [[nodiscard]] Shown* shownBy(const QString& server, uint id);
    void askWhoCanBeStarted(std::function<void(Authorization)> then, int timeout);

    QDBusConnection m_bus;
    int m_answerLimit; // milliseconds
    std::function<void(const std::string& activationToken)> m_onOpen;
    std::deque<Shown> m_shown; // the oldest first
};

} // namespace vellumor
