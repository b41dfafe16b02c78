#include "platform/linux/tray/LinuxStatusItem.h"

#include "base/Log.h"
#include "platform/linux/tray/ItemLayout.h"
#include "platform/linux/tray/RootPosition.h"

#include <QCursor>
#include <QGuiApplication>
#include <QScreen>

#include <vector>

namespace vellumor {

namespace {

QDBusConnection busAt(const std::string& address)
{
    if (address.empty())
        return QDBusConnection::sessionBus();
    const auto text = QString::fromStdString(address);
    return QDBusConnection::connectToBus(text, QStringLiteral("vellumor-tray-") + text);
}

std::vector<RootPosition::Screen> screens()
{
    std::vector<RootPosition::Screen> all;
    for (const QScreen* screen : QGuiApplication::screens())
        all.push_back({screen->geometry(), screen->devicePixelRatio()});
    return all;
}

// What hosts tell of a click is a place on the root window of X11; on Wayland it is one inside the
// item, or nothing, whether this program speaks Wayland itself or not.
std::optional<QRect> anchorAt(QPoint position)
{
    if (!qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY"))
        return std::nullopt;
    const auto point = RootPosition::nearest(position, screens(), QCursor::pos());
    return point ? std::optional(QRect(*point, QSize(1, 1))) : std::nullopt;
}

} // namespace

LinuxStatusItem::LinuxStatusItem(Clock& clock, Worker& worker, std::string busAddress)
    : m_clock(clock)
    , m_worker(worker)
    , m_busAddress(std::move(busAddress))
    , m_bus(busAt(m_busAddress))
    , m_watcher(worker, m_bus)
    , m_colours(m_trayOwner, m_bus)
{
}

LinuxStatusItem::~LinuxStatusItem() = default;

void LinuxStatusItem::show(Handlers handlers)
{
    m_handlers = std::move(handlers);
    m_menu = std::make_unique<StatusMenu>(m_handlers.menu);
    m_row = std::make_unique<ItemRow>(
        m_clock, m_worker, m_busAddress, *m_menu,
        [this](QPoint position, const std::string& token) { click(position, token); });
    m_trayOwner.start({.onOwner = [this] { onTrayOwner(); },
                       .onColours = [this] { redraw(); },
                       .onTaken =
                           [this](WId window) {
                               if (m_icon)
                                   m_icon->onTaken(window);
                           }});
    m_colours.start([this] { redraw(); });
    waitForWatcher();
    if (!m_bus.isConnected())
        log(Tag::main, "no session bus — the label can only stand in a tray of X11");
    m_watcher.start([this] { onWatcher(); });
    redraw();
}

void LinuxStatusItem::setLabel(StatusLabel label)
{
    if (label == m_label)
        return;
    m_label = std::move(label);
    if (m_row == nullptr) // not shown yet
        return;
    embed();
    redraw();
}

void LinuxStatusItem::onWatcher()
{
    const auto& found = m_watcher.found();
    if (found) {
        m_patience.reset();
        m_icon.reset();
    } else {
        waitForWatcher();
    }
    redraw();
    m_row->setWatcher(found ? found->owner : QString());
}

void LinuxStatusItem::onTrayOwner()
{
    m_icon.reset(); // it belonged to the one before
    embed();
    redraw();
}

// A panel that is started again is not mistaken for one that has only a tray of X11.
void LinuxStatusItem::waitForWatcher()
{
    m_patience = m_clock.after(patience, [this] { onPatienceEnded(); });
}

void LinuxStatusItem::onPatienceEnded()
{
    m_patience.reset();
    embed();
    if (m_trayOwner.exists() || m_hasToldOfNoTray)
        return;
    m_hasToldOfNoTray = true;
    log(Tag::main, "no tray — start the program again to open its window");
}

void LinuxStatusItem::embed()
{
    const bool mayWatcherCome = m_patience != nullptr && m_bus.isConnected();
    if (m_icon || m_watcher.found() || mayWatcherCome || !m_trayOwner.exists() || !hasLabel())
        return;
    m_icon =
        std::make_unique<XEmbedIcon>(m_trayOwner, m_handlers.menu, [this](const QRect& anchor) {
            m_handlers.onClick(anchor, {});
        });
    m_icon->setLabel(m_label, m_colours.foreground(std::nullopt));
}

// Items stand ready while nobody takes them, and show the panel that was there last.
void LinuxStatusItem::redraw()
{
    const auto& found = m_watcher.found();
    const QColor tint = m_colours.foreground(
        found && found->host == ItemLayout::Host::waybar ? std::optional(true) : std::nullopt);
    if (m_icon)
        m_icon->setLabel(m_label, tint);
    if (!found || !hasLabel())
        return;
    const auto pictures = ItemLayout::pictures(m_label, found->host);
    // A symbol stands for the whole label.
    const auto iconName =
        pictures.size() == 1 ? QString::fromStdString(m_label.iconName) : QString();
    const auto text = QString::fromStdString(m_label.text);
    const auto toolTip = found->host == ItemLayout::Host::waybar ? text.toHtmlEscaped() : text;
    std::vector<StatusNotifierItem::Face> faces;
    faces.reserve(pictures.size());
    for (const auto& picture : pictures)
        faces.push_back({busPictures(picture, tint), iconName, text, toolTip});
    m_row->setFaces(std::move(faces));
}

// Nothing stands in the panel before it is known what.
bool LinuxStatusItem::hasLabel() const
{
    return m_label != StatusLabel();
}

void LinuxStatusItem::click(QPoint position, const std::string& activationToken) const
{
    m_handlers.onClick(anchorAt(position), activationToken);
}

} // namespace vellumor
