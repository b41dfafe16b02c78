#pragma once

#include "async/Task.h"
#include "async/Worker.h"
#include "platform/linux/tray/ItemLayout.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QPointer>

#include <functional>
#include <optional>

namespace vellumor {

// Who takes the items of the session, if anybody: the owner of org.kde.StatusNotifierWatcher, now
// or later. Main thread only.
class TrayWatcher final : public QObject {
    Q_OBJECT

public:
    struct Found {
        QString owner; // on the bus
        ItemLayout::Host host;

        bool operator==(const Found&) const = default;
    };

    // `worker` outlives this.
    TrayWatcher(Worker& worker, QDBusConnection bus);

    // Once. `onChange` is called whenever somebody else is there, or nobody any more.
    void start(std::function<void()> onChange);

    [[nodiscard]] const std::optional<Found>& found() const { return m_found; }
    [[nodiscard]] static QString busName();

private slots:
    void onOwnerChanged(const QDBusMessage& message);
    void onBusLost();

private:
    void lookAt(const QString& owner);
    void askForProcess();
    [[nodiscard]] static Task<> judge(QPointer<TrayWatcher> self, Worker& worker, QString owner,
                                      uint process);
    void take(std::optional<Found> found);

    Worker& m_worker;
    QDBusConnection m_bus;
    std::function<void()> m_onChange;
    QString m_owner; // who is there, if not yet known what it is
    std::optional<Found> m_found;
    Task<> m_judging;
};

} // namespace vellumor
