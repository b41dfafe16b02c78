#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>

#include <functional>
#include <optional>

namespace vellumor {

// Asks the desktop, through its portal, where a file is to be saved: its own panel opens, in a
// program of its own. Main thread only; holds nobody up.
class PortalSavePanel final : public QObject {
    Q_OBJECT

public:
    struct Question {
        QString title;
        QString name;   // that is offered
        QString folder; // that is shown first
        QString kind;   // of file, as the user reads it
        QString type;   // of its content, as "text/csv"
    };
    enum class End {
        chosen,
        cancelled,
        unavailable // no portal, none that has panels, or an answer that makes no sense
    };
    // With the path of the file where one was chosen.
    using Then = std::function<void(End, const QString& path)>;

    explicit PortalSavePanel(QDBusConnection bus = QDBusConnection::sessionBus(),
                             QObject* parent = nullptr);

    // Once. Calls `then` exactly once, never before it returns itself, and lives no longer than
    // that.
    void ask(const Question& question, Then then);

    // The one file in the portal's answer; nothing for whatever is not a file on this machine.
    [[nodiscard]] static std::optional<QString> chosenPath(const QVariantMap& results);

    // Of the portal's word that it has understood. Whoever stays silent for longer is not waited
    // for; how long the user takes is another matter.
    static constexpr int mostMilliseconds = 5000;

private slots:
    void onResponse(const QDBusMessage& message);
    void onOwnerChanged(const QDBusMessage& message);

private:
    void send(const Question& question);
    void listenTo(const QString& request);
    void onAccepted(const QDBusMessage& answer);
    void withdraw();
    void take(const QDBusMessage& response);
    void finish(End end, const QString& path = {});

    QDBusConnection m_bus;
    Then m_then;                            // empty once it was called
    QString m_request;                      // the object that the answer comes from
    QString m_portal;                       // who that is on the bus, once it has spoken
    std::optional<QDBusMessage> m_response; // that came before
};

} // namespace vellumor
