#pragma once

#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusError>
#include <QDBusMessage>
#include <QObject>
#include <QStringList>
#include <QVariantMap>

#include <string>
#include <vector>

namespace vellumor::test {

// A notification server: owns org.freedesktop.Notifications as long as it lives, writes down what
// it is asked to show, and counts from 1.
class FakeNotificationServer final : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")

public:
    enum class Answer { gives, refuses, owes };
    struct Shown {
        std::string signature; // of the whole call
        QVariantList arguments;

        [[nodiscard]] std::string title() const { return arguments[3].toString().toStdString(); }
        [[nodiscard]] std::string body() const { return arguments[4].toString().toStdString(); }
    };

    explicit FakeNotificationServer(const std::string& busAddress, QStringList capabilities = {},
                                    const QString& name = serverName())
        : m_connection(
              QStringLiteral("notification-server-%1").arg(reinterpret_cast<quintptr>(this)))
        , m_name(name)
        , m_capabilities(std::move(capabilities))
    {
        auto bus = QDBusConnection::connectToBus(QString::fromStdString(busAddress), m_connection);
        bus.registerObject(QStringLiteral("/org/freedesktop/Notifications"), this,
                           QDBusConnection::ExportScriptableSlots |
                               QDBusConnection::ExportScriptableSignals);
        bus.registerService(m_name);
    }
    ~FakeNotificationServer() override
    {
        QDBusConnection(m_connection).unregisterService(m_name); // at once, unlike the connection
        QDBusConnection::disconnectFromBus(m_connection);
    }

    static QString serverName() { return QStringLiteral("org.freedesktop.Notifications"); }

    Answer capabilitiesAnswer = Answer::gives;
    Answer notifyAnswer = Answer::gives;
    uint firstId = 1;

    [[nodiscard]] const std::vector<Shown>& shown() const { return m_shown; }
    [[nodiscard]] int asked() const { return m_asked; } // for its capabilities
    [[nodiscard]] QDBusConnection connection() const { return QDBusConnection(m_connection); }

public Q_SLOTS:
    Q_SCRIPTABLE QStringList GetCapabilities()
    {
        ++m_asked;
        answerAs(capabilitiesAnswer);
        return m_capabilities;
    }
    Q_SCRIPTABLE uint Notify(const QString&, uint, const QString&, const QString&, const QString&,
                             const QStringList&, const QVariantMap&, int)
    {
        m_shown.push_back({message().signature().toStdString(), message().arguments()});
        answerAs(notifyAnswer);
        return firstId + static_cast<uint>(m_shown.size()) - 1;
    }

Q_SIGNALS:
    Q_SCRIPTABLE void ActionInvoked(uint id, const QString& action);
    Q_SCRIPTABLE void ActivationToken(uint id, const QString& token);
    Q_SCRIPTABLE void NotificationClosed(uint id, uint reason);

private:
    void answerAs(Answer answer)
    {
        if (answer == Answer::refuses)
            sendErrorReply(QDBusError::Failed, QStringLiteral("no"));
        else if (answer == Answer::owes)
            setDelayedReply(true);
    }

    QString m_connection;
    QString m_name;
    QStringList m_capabilities;
    std::vector<Shown> m_shown;
    int m_asked = 0;
};

} // namespace vellumor::test
