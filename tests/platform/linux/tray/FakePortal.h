#pragma once

#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusError>
#include <QDBusVariant>
#include <QObject>

#include <string>

namespace vellumor::test {

// The settings portal: tells one setting, the colour scheme, as long as it lives.
class FakePortal final : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")

public:
    // An invalid value is answered with an error.
    FakePortal(const std::string& busAddress, QVariant value,
               const char* name = "org.freedesktop.portal.Desktop")
        : m_connection(QStringLiteral("fake-portal-%1").arg(reinterpret_cast<quintptr>(this)))
        , m_name(QLatin1String(name))
        , m_value(std::move(value))
    {
        auto bus = QDBusConnection::connectToBus(QString::fromStdString(busAddress), m_connection);
        bus.registerObject(QStringLiteral("/org/freedesktop/portal/desktop"), this,
                           QDBusConnection::ExportScriptableSlots |
                               QDBusConnection::ExportScriptableSignals);
        bus.registerService(m_name);
    }
    ~FakePortal() override
    {
        QDBusConnection(m_connection).unregisterService(m_name); // at once, unlike the connection
        QDBusConnection::disconnectFromBus(m_connection);
    }

    void set(const QVariant& value)
    {
        m_value = value;
        emit SettingChanged(QStringLiteral("org.freedesktop.appearance"),
                            QStringLiteral("color-scheme"), QDBusVariant(value));
    }
    [[nodiscard]] int reads() const { return m_reads; }

public Q_SLOTS:
    Q_SCRIPTABLE QDBusVariant Read(const QString& space, const QString& key)
    {
        ++m_reads;
        const bool isKnown = space == QLatin1String("org.freedesktop.appearance") &&
                             key == QLatin1String("color-scheme");
        if (!isKnown || !m_value.isValid())
            sendErrorReply(QDBusError::Failed, QStringLiteral("no such setting"));
        return QDBusVariant(m_value);
    }

Q_SIGNALS:
    Q_SCRIPTABLE void SettingChanged(const QString& space, const QString& key,
                                     const QDBusVariant& value);

private:
    QString m_connection;
    QString m_name;
    QVariant m_value;
    int m_reads = 0;
};

} // namespace vellumor::test
