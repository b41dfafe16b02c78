#pragma once

#include "platform/StatusService.h"
#include "platform/linux/status/StatusEncoding.h"
#include "platform/linux/status/StatusIntrospection.h"

#include <QDBusAbstractAdaptor>
#include <QDBusConnection>
#include <QDBusMessage>

namespace vellumor {

// The interface dev.quorle.Vellumor1 of the object that it is given to.
class StatusAdaptor final : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "dev.quorle.Vellumor1")
    Q_CLASSINFO("D-Bus Introspection", VELLUMOR_STATUS_INTROSPECTION)
    Q_PROPERTY(uint Version READ version)
    Q_PROPERTY(vellumor::StatusMaps Accounts READ accounts)
    Q_PROPERTY(qlonglong LastUpdate READ lastUpdate)

public:
    static constexpr const char* tooSoon = "dev.quorle.Vellumor1.Error.TooSoon";

    StatusAdaptor(QObject* object, const QDBusConnection& bus, StatusService::Handlers handlers);

    [[nodiscard]] static uint version() { return StatusReport::schemaVersion; }
    [[nodiscard]] StatusMaps accounts() const;
    [[nodiscard]] qlonglong lastUpdate() const;

public Q_SLOTS:
    void Refresh(const QDBusMessage& message);
    void OpenPopover() { m_handlers.openPopover(); }

Q_SIGNALS:
    void Changed();

private:
    void refuse(const QDBusMessage& message, const QString& error, const QString& why);

    QDBusConnection m_bus;
    StatusService::Handlers m_handlers;
};

} // namespace vellumor
