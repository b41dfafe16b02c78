#pragma once

#include "async/Worker.h"
#include "base/Clock.h"
#include "platform/StatusItem.h"
#include "platform/linux/tray/ItemRow.h"
#include "platform/linux/tray/PanelColours.h"
#include "platform/linux/tray/StatusMenu.h"
#include "platform/linux/tray/TrayOwner.h"
#include "platform/linux/tray/TrayWatcher.h"
#include "platform/linux/tray/XEmbedIcon.h"

#include <memory>
#include <string>

namespace vellumor {

// StatusItem on a Linux desktop: items on the session bus for whoever takes them, else, when nobody
// has come for ten seconds, a window in X11's tray. It follows trays that come, go and come again.
class LinuxStatusItem final : public StatusItem {
public:
    // How long a watcher of items is waited for.
    static constexpr std::chrono::seconds patience{10};

    // `busAddress` as DBUS_SESSION_BUS_ADDRESS has it; empty for the usual one. `clock` and
    // `worker` outlive this.
    LinuxStatusItem(Clock& clock, Worker& worker, std::string busAddress = {});
    ~LinuxStatusItem() override;

    void show(Handlers handlers) override;
    void setLabel(StatusLabel label) override;

private:
    void onWatcher();
    void onTrayOwner();
    void waitForWatcher();
    void onPatienceEnded();
    void embed();
    void redraw();
    [[nodiscard]] bool hasLabel() const;
    void click(QPoint position, const std::string& activationToken) const;

    Clock& m_clock;
    Worker& m_worker;
    std::string m_busAddress;
    QDBusConnection m_bus;
    TrayWatcher m_watcher;
    TrayOwner m_trayOwner;
    PanelColours m_colours;
    Handlers m_handlers;
    StatusLabel m_label;
    std::unique_ptr<StatusMenu> m_menu;
    std::unique_ptr<ItemRow> m_row;
    std::unique_ptr<XEmbedIcon> m_icon;
    std::unique_ptr<Alarm> m_patience; // while a watcher is waited for
    bool m_hasToldOfNoTray = false;
};

} // namespace vellumor
