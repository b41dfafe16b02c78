#pragma once

#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusError>
#include <QObject>

#include <string>
#include <vector>

namespace vellumor::test {

// A panel that takes items: owns org.kde.StatusNotifierWatcher as long as it lives, and writes down
// who has come.
class FakeTrayHost final : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")

public:
    enum class Answer { accepts, refuses };

    explicit FakeTrayHost(const std::string& busAddress, Answer answer = Answer::accepts)
        : m_name(QStringLiteral("fake-host-%1").arg(reinterpret_cast<quintptr>(this)))
        , m_answer(answer)
    {
        auto bus = QDBusConnection::connectToBus(QString::fromStdString(busAddress), m_name);
        bus.registerObject(QStringLiteral("/StatusNotifierWatcher"), this,
                           QDBusConnection::ExportScriptableSlots);
        bus.registerService(watcherName());
    }
    ~FakeTrayHost() override
    {
        QDBusConnection(m_name).unregisterService(watcherName()); // at once, unlike the connection
        QDBusConnection::disconnectFromBus(m_name);
    }

    [[nodiscard]] const std::vector<QString>& items() const { return m_items; }
    [[nodiscard]] QString owner() const { return QDBusConnection(m_name).baseService(); }

public Q_SLOTS:
    Q_SCRIPTABLE void RegisterStatusNotifierItem(const QString& item)
    {
        m_items.push_back(item);
        if (m_answer == Answer::refuses)
            sendErrorReply(QDBusError::Failed, QStringLiteral("no"));
    }

private:
    static QString watcherName() { return QStringLiteral("org.kde.StatusNotifierWatcher"); }

    QString m_name;
    Answer m_answer;
    std::vector<QString> m_items;
};

} // namespace vellumor::test
