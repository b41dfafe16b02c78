#pragma once

#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusError>
#include <QObject>
#include <QStringList>

#include <string>
#include <vector>

namespace vellumor::test {

// A file manager on a bus, which notes what it was asked to show.
class FakeFileManager final : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.FileManager1")

public:
    enum class Answer { gives, refuses, owes };

    explicit FakeFileManager(QDBusConnection bus, Answer answer = Answer::gives)
        : m_bus(std::move(bus))
        , m_answer(answer)
    {
        m_bus.registerObject(QStringLiteral("/org/freedesktop/FileManager1"), this,
                             QDBusConnection::ExportScriptableSlots);
        m_bus.registerService(QStringLiteral("org.freedesktop.FileManager1"));
    }
    ~FakeFileManager() override
    {
        m_bus.unregisterService(QStringLiteral("org.freedesktop.FileManager1"));
        m_bus.unregisterObject(QStringLiteral("/org/freedesktop/FileManager1"));
    }

    // "ShowFolders file:///tmp ''", a call each.
    [[nodiscard]] const std::vector<std::string>& calls() const { return m_calls; }

public Q_SLOTS:
    Q_SCRIPTABLE void ShowFolders(const QStringList& uris, const QString& startupId)
    {
        note("ShowFolders", uris, startupId);
    }
    Q_SCRIPTABLE void ShowItems(const QStringList& uris, const QString& startupId)
    {
        note("ShowItems", uris, startupId);
    }

private:
    void note(const char* method, const QStringList& uris, const QString& startupId)
    {
        m_calls.push_back(std::string(method) + " " + uris.join(u' ').toStdString() + " '" +
                          startupId.toStdString() + "'");
        if (m_answer == Answer::refuses)
            sendErrorReply(QDBusError::Failed, QStringLiteral("no"));
        if (m_answer == Answer::owes)
            setDelayedReply(true);
    }

    QDBusConnection m_bus;
    Answer m_answer;
    std::vector<std::string> m_calls;
};

} // namespace vellumor::test
