#include "platform/linux/status/StatusEncoding.h"

#include "status/StatusKeys.h"

#include <QDBusMetaType>
#include <QStringList>

namespace vellumor::StatusEncoding {

namespace {

namespace Keys = StatusKeys;

// Text of the bus has no null in it, behind which a reader would see nothing.
QString textOf(const std::string& text)
{
    return QString::fromStdString(text).replace(QChar(QChar::Null),
                                                QChar(QChar::ReplacementCharacter));
}

QVariantMap mapOf(const StatusWindow& window)
{
    return {{Keys::kind, textOf(window.kind)},
            {Keys::title, textOf(window.title)},
            {Keys::percent, window.percent},
            {Keys::percentText, textOf(window.percentText)},
            {Keys::resetsAt, moment(window.resetsAt)},
            {Keys::resetText, textOf(window.resetText)},
            {Keys::active, window.isActive},
            {Keys::scope, textOf(window.scope)},
            {Keys::stale, window.isStale}};
}

QVariantMap mapOf(const StatusAccount& account)
{
    StatusMaps windows;
    for (const StatusWindow& window : account.windows)
        windows.append(mapOf(window));
    QStringList notes;
    for (const std::string& note : account.notes)
        notes.append(textOf(note));
    return {{Keys::id, textOf(account.id)},
            {Keys::name, textOf(account.name)},
            {Keys::state, textOf(account.state)},
            {Keys::windows, QVariant::fromValue(windows)},
            {Keys::credits, textOf(account.credits)},
            {Keys::creditsExhausted, account.areCreditsExhausted},
            {Keys::forecast, textOf(account.forecast)},
            {Keys::updatedAt, moment(account.updatedAt)},
            {Keys::notes, notes}};
}

} // namespace

void registerTypes()
{
    qDBusRegisterMetaType<StatusMaps>();
}

StatusMaps accounts(const StatusReport& report)
{
    StatusMaps maps;
    for (const StatusAccount& account : report.accounts)
        maps.append(mapOf(account));
    return maps;
}

qlonglong moment(const std::optional<Instant>& instant)
{
    return instant ? static_cast<qlonglong>(instant->time_since_epoch().count()) : 0;
}

} // namespace vellumor::StatusEncoding
