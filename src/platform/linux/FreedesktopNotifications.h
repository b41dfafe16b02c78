#pragma once

#include "platform/Notifications.h"

#include <QDBusConnection>
#include <QObject>
#include <QPointer>

#include <map>
#include <set>

class QDBusMessage;

namespace vellumor {

// Notifications on org.freedesktop.Notifications. A server that is installed is started by the bus
// when it is needed; one that hangs, or none, costs the notification and nothing else.
class FreedesktopNotifications final : public QObject, public Notifications {
    Q_OBJECT

public:
    explicit FreedesktopNotifications(QDBusConnection bus = QDBusConnection::sessionBus());

    void deliver(const std::string& title, const std::string& body) override;
    void requestAuthorization(std::function<void(Authorization)> then) override;
    void onOpen(std::function<void(const std::string& activationToken)> handler) override;

private Q_SLOTS:
    void onActionInvoked(uint id, const QString& action);
    void onActivationToken(uint id, const QString& token);
    void onClosed(uint id, uint reason);

private:
    void send(const QString& title, const QString& body);
    void askWhoCanBeStarted(std::function<void(Authorization)> then);

    QDBusConnection m_bus;
    std::function<void(const std::string& activationToken)> m_onOpen;
    std::map<uint, QString> m_shown; // id to activation token, until it is closed
};

} // namespace vellumor
