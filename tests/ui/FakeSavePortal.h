#pragma once

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QObject>
#include <QVariantMap>

#include <vector>

namespace vellumor::test {

// The portal's panel for saving, which a test answers in the place of a user.
class FakeSavePortal final : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.FileChooser")

public:
    static constexpr const char* name = "org.freedesktop.portal.Desktop";
    static constexpr const char* path = "/org/freedesktop/portal/desktop";
    static constexpr const char* request = "org.freedesktop.portal.Request";

    using Filters = QList<QPair<QString, QList<QPair<uint, QString>>>>;
    struct Asked {
        QString parent;
        QString title;
        QVariantMap options;
        QString request; // the object that is to answer

        // The kinds of file that are offered.
        [[nodiscard]] Filters filters() const
        {
            return qdbus_cast<Filters>(options.value(QStringLiteral("filters")));
        }
    };
    enum class Manner {
        usual,
        silent,       // never says that it has understood
        oldNames,     // the request is another than the caller thinks
        elsewhere,    // the request is not where requests are
        withoutPanels // as a portal that has other things alone
    };

    explicit FakeSavePortal(QDBusConnection connection)
        : m_bus(std::move(connection))
    {
        m_bus.registerObject(QString::fromLatin1(path), this,
                             QDBusConnection::ExportScriptableSlots);
        m_bus.registerService(QString::fromLatin1(name));
    }
    ~FakeSavePortal() override { leave(); }

    void leave() { m_bus.unregisterService(QString::fromLatin1(name)); }

    Manner manner = Manner::usual;
    QVariantList answerAtOnce; // before it has said that it has understood
    std::vector<Asked> asked;

    // As the user's choice: a number, and a map with what was chosen.
    void respond(const QVariantList& values) { respondFrom(m_bus, values); }
    void respondFrom(const QDBusConnection& sender, const QVariantList& values) const
    {
        auto signal = QDBusMessage::createSignal(asked.back().request, QString::fromLatin1(request),
                                                 QStringLiteral("Response"));
        signal.setArguments(values);
        sender.send(signal);
    }

public slots:
    Q_SCRIPTABLE QDBusObjectPath SaveFile(const QString& parent, const QString& title,
                                          const QVariantMap& options)
    {
        QString caller = message().service().mid(1);
        caller.replace(QLatin1Char('.'), QLatin1Char('_'));
        const QString usual = QString::fromLatin1(path) + QStringLiteral("/request/") + caller +
                              QLatin1Char('/') +
                              options.value(QStringLiteral("handle_token")).toString();
        asked.push_back({parent, title, options, usual});
        if (manner == Manner::withoutPanels)
            sendErrorReply(QDBusError::UnknownMethod);
        setDelayedReply(manner == Manner::silent);
        if (manner == Manner::oldNames)
            asked.back().request += QStringLiteral("_old");
        if (manner == Manner::elsewhere)
            asked.back().request = QStringLiteral("/org/example");
        if (!answerAtOnce.isEmpty())
            respond(answerAtOnce);
        return QDBusObjectPath(asked.back().request);
    }

private:
    QDBusConnection m_bus;
};

} // namespace vellumor::test
