#pragma once

#include "base/Clock.h"
#include "platform/linux/tray/RegisteredItem.h"

#include <memory>
#include <string>
#include <vector>

namespace vellumor {

// The items of the panel, side by side. A panel puts what comes to the left of what is there, and
// remembers places by an item's id: so the items come from right to left, and their ids count in
// the same direction. An item more or less is one at the left end. Main thread only.
class ItemRow final {
public:
    // Between one item and the next. A panel that has just come up shows only some of several items
    // that come all at once.
    static constexpr std::chrono::milliseconds gap{100};

    // `clock`, `worker` and `menu` outlive this.
    ItemRow(Clock& clock, Worker& worker, std::string busAddress, StatusMenu& menu,
            StatusNotifierItem::OnClick onClick);

    void setFaces(std::vector<StatusNotifierItem::Face> leftToRight);
    // Who the watcher is; empty when there is none. Items come to it once they have faces.
    void setWatcher(const QString& owner);

private:
    void resize(std::size_t count);
    void registerNext();
    void onRegistered();

    Clock& m_clock;
    Worker& m_worker;
    std::string m_busAddress;
    StatusMenu& m_menu;
    StatusNotifierItem::OnClick m_onClick;
    std::vector<std::unique_ptr<RegisteredItem>> m_items; // from right to left
    RegisteredItem* m_registering = nullptr;              // one after the other
    std::unique_ptr<Alarm> m_gap;                         // while one has just come
    unsigned m_made = 0;
    QString m_watcher;
};

} // namespace vellumor
