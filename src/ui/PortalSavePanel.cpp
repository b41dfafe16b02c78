#include "ui/PortalSavePanel.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QFile>
#include <QTimer>
#include <QUrl>
#include <QUuid>

namespace vellumor {

namespace {

const auto portal = QStringLiteral("org.freedesktop.portal.Desktop");
const auto portalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const auto fileChooser = QStringLiteral("org.freedesktop.portal.FileChooser");
const auto requestInterface = QStringLiteral("org.freedesktop.portal.Request");
const auto requestFolder = QStringLiteral("/org/freedesktop/portal/desktop/request/");
const auto busName = QStringLiteral("org.freedesktop.DBus");
const auto busPath = QStringLiteral("/org/freedesktop/DBus");

// Anything else is the user's no: GTK's panel says 1 for its button and 2 for the Escape key.
constexpr uint chosenByUser = 0;

constexpr qsizetype longestPath = 4096;

// A text on the bus that ends with a zero, as paths do there.
QByteArray asPath(const QString& path)
{
    QByteArray bytes = QFile::encodeName(path);
    bytes.append('\0');
    return bytes;
}

// The kinds of file that a panel offers: on the bus a(sa(us)).
using Rule = QPair<uint, QString>;
using Filter = QPair<QString, QList<Rule>>;
using Filters = QList<Filter>;
constexpr uint byType = 1; // and not by a pattern of names

} // namespace

PortalSavePanel::PortalSavePanel(QDBusConnection bus, QObject* parent)
    : QObject(parent)
    , m_bus(std::move(bus))
{
    qDBusRegisterMetaType<Rule>();
    qDBusRegisterMetaType<QList<Rule>>();
    qDBusRegisterMetaType<Filter>();
    qDBusRegisterMetaType<Filters>();
}

void PortalSavePanel::ask(const Question& question, Then then)
{
    m_then = std::move(then);
    if (m_bus.isConnected())
        send(question);
    else
        QTimer::singleShot(0, this, [this] { finish(End::unavailable); });
}

void PortalSavePanel::send(const Question& question)
{
    const QString token = QStringLiteral("vellumor_") + QUuid::createUuid().toString(QUuid::Id128);
    QString self = m_bus.baseService().mid(1);
    self.replace(QLatin1Char('.'), QLatin1Char('_'));
    // Before the question, since the answer may be as quick as the call's own.
    listenTo(requestFolder + self + QLatin1Char('/') + token);
    m_bus.connect(QString(), busPath, busName, QStringLiteral("NameOwnerChanged"), {portal},
                  QString(), this, SLOT(onOwnerChanged(QDBusMessage)));
    const Filters filters{{question.kind, {{byType, question.type}}}};
    const QVariantMap options{{QStringLiteral("handle_token"), token},
                              {QStringLiteral("filters"), QVariant::fromValue(filters)},
                              {QStringLiteral("current_name"), question.name},
                              {QStringLiteral("current_folder"), asPath(question.folder)}};
    auto call =
        QDBusMessage::createMethodCall(portal, portalPath, fileChooser, QStringLiteral("SaveFile"));
    // No parent: the popover is about to close.
    call.setArguments({QString(), question.title, options});
    auto* const waiting =
        new QDBusPendingCallWatcher(m_bus.asyncCall(call, mostMilliseconds), this);
    connect(waiting, &QDBusPendingCallWatcher::finished, this,
            [this, waiting] { onAccepted(waiting->reply()); });
}

// Every sender's message gets through, since to tell them apart the library would ask the bus and
// wait.
void PortalSavePanel::listenTo(const QString& request)
{
    m_request = request;
    m_bus.connect(QString(), request, requestInterface, QStringLiteral("Response"), this,
                  SLOT(onResponse(QDBusMessage)));
}

void PortalSavePanel::onAccepted(const QDBusMessage& answer)
{
    const auto request =
        qdbus_cast<QDBusObjectPath>(answer.arguments().value(0)).path(); // empty for an error
    if (!request.startsWith(requestFolder)) {
        withdraw();
        finish(End::unavailable);
        return;
    }
    m_portal = answer.service();
    if (request != m_request) // one that is older than tokens
        listenTo(request);
    if (m_response)
        take(*m_response);
}

// For a portal that wakes up later: its panel would be a second one.
void PortalSavePanel::withdraw()
{
    auto call = QDBusMessage::createMethodCall(portal, m_request, requestInterface,
                                               QStringLiteral("Close"));
    call.setAutoStartService(false);
    m_bus.send(call);
}

void PortalSavePanel::onResponse(const QDBusMessage& message)
{
    if (m_portal.isEmpty())
        m_response = message;
    else
        take(message);
}

void PortalSavePanel::take(const QDBusMessage& response)
{
    if (response.service() != m_portal)
        return;
    const QVariantList values = response.arguments();
    if (response.signature() != QStringLiteral("ua{sv}"))
        return finish(End::unavailable);
    if (values.value(0).toUInt() != chosenByUser)
        return finish(End::cancelled);
    const auto path = chosenPath(qdbus_cast<QVariantMap>(values.value(1)));
    finish(path ? End::chosen : End::unavailable, path.value_or(QString()));
}

std::optional<QString> PortalSavePanel::chosenPath(const QVariantMap& results)
{
    const QVariant uris = results.value(QStringLiteral("uris"));
    if (uris.typeId() != QMetaType::QStringList || uris.toStringList().size() != 1)
        return std::nullopt;
    const QString uri = uris.toStringList().constFirst();
    if (uri.size() > 3 * longestPath) // each of its bytes may be written as three
        return std::nullopt;
    const QUrl url(uri, QUrl::StrictMode);
    if (!url.isLocalFile() || !url.host().isEmpty() || url.hasQuery() || url.hasFragment())
        return std::nullopt;
    const QString path = url.toLocalFile();
    const bool isFile = path.startsWith(QLatin1Char('/')) && !path.endsWith(QLatin1Char('/')) &&
                        !path.contains(QChar(QChar::Null)) && path.size() <= longestPath;
    return isFile ? std::optional(path) : std::nullopt;
}

// The portal has gone, and its panel with it.
void PortalSavePanel::onOwnerChanged(const QDBusMessage& message)
{
    if (message.service() == busName && !m_portal.isEmpty() &&
        message.arguments().value(2).toString() != m_portal)
        finish(End::unavailable);
}

void PortalSavePanel::finish(End end, const QString& path)
{
    if (!m_then)
        return;
    const Then then = std::exchange(m_then, {});
    deleteLater();
    then(end, path);
}

} // namespace vellumor
