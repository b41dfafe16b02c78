#pragma once

#include "async/Task.h"
#include "async/Worker.h"
#include "platform/linux/tray/StatusMenu.h"
#include "platform/linux/tray/StatusNotifierItem.h"

#include <QDBusConnection>
#include <QPointer>

#include <functional>
#include <string>

namespace vellumor {

// One item with what carries it: a connection to the bus, since every item has the same object
// paths, and a name. Both end with this object, which is how hosts learn that the item is gone.
class RegisteredItem final : public QObject {
    Q_OBJECT

public:
    struct Identity {
        std::string busAddress; // empty: that of the session
        unsigned number;        // of the name on the bus; no two items of a process share one
        QString id;             // by which hosts remember the item's place
    };

    // `worker` and `menu` outlive this.
    RegisteredItem(Worker& worker, Identity identity, StatusMenu& menu,
                   StatusNotifierItem::OnClick onClick);
    ~RegisteredItem() override;

    // Tells the watcher of this item, and calls `then` when that is done or has failed. `owner`:
    // who the watcher is. One at a time.
    void registerWith(const QString& owner, std::function<void()> then);
    [[nodiscard]] bool isRegisteredWith(const QString& owner) const { return owner == m_owner; }

    [[nodiscard]] StatusNotifierItem& item() { return m_item; }

private:
    [[nodiscard]] static Task<> open(QPointer<RegisteredItem> self, Worker& worker);
    void exportObjects();
    void askForName();
    void callWatcher();

    Worker& m_worker;
    Identity m_identity;
    StatusMenu& m_menu;
    StatusNotifierItem m_item;
    QString m_connectionName;
    QString m_busName;
    bool m_isOpen = false;
    QString m_owner; // whom it is registered with, or was tried to
    std::function<void()> m_then;
    Task<> m_opening;
};

} // namespace vellumor
