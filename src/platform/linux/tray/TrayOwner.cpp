#include "platform/linux/tray/TrayOwner.h"

#include <QGuiApplication>

#include <xcb/xcb.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <vector>

namespace vellumor {

namespace {

// What xcb gives, freed when it goes.
struct Free {
    void operator()(void* reply) const { std::free(reply); }
};
template <typename T>
using Reply = std::unique_ptr<T, Free>;

template <typename T>
Reply<T> owned(T* reply)
{
    return Reply<T>(reply);
}

constexpr std::uint32_t protocolVersion = 0;
constexpr std::uint32_t isMapped = 1;
constexpr std::uint32_t requestDock = 0;
constexpr std::size_t foregroundChannels = 3;

xcb_connection_t* connectionOfApplication()
{
    const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return x11 != nullptr ? x11->connection() : nullptr;
}

xcb_atom_t atom(xcb_connection_t* connection, std::string_view name)
{
    const auto asked =
        xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data());
    const auto reply = owned(xcb_intern_atom_reply(connection, asked, nullptr));
    return reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
}

std::uint8_t depthOf(xcb_connection_t* connection, xcb_visualid_t visual)
{
    const auto screen = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (auto depth = xcb_screen_allowed_depths_iterator(screen.data); depth.rem != 0;
         xcb_depth_next(&depth)) {
        for (auto one = xcb_depth_visuals_iterator(depth.data); one.rem != 0;
             xcb_visualtype_next(&one)) {
            if (one.data->visual_id == visual)
                return depth.data->depth;
        }
    }
    return 0;
}

} // namespace

struct TrayOwner::Atoms {
    explicit Atoms(xcb_connection_t* connection)
        : selection(atom(connection, "_NET_SYSTEM_TRAY_S0"))
        , manager(atom(connection, "MANAGER"))
        , colours(atom(connection, "_NET_SYSTEM_TRAY_COLORS"))
        , visual(atom(connection, "_NET_SYSTEM_TRAY_VISUAL"))
        , opcode(atom(connection, "_NET_SYSTEM_TRAY_OPCODE"))
        , embedInfo(atom(connection, "_XEMBED_INFO"))
    {
    }

    xcb_atom_t selection;
    xcb_atom_t manager;
    xcb_atom_t colours;
    xcb_atom_t visual;
    xcb_atom_t opcode;
    xcb_atom_t embedInfo;
};

TrayOwner::TrayOwner() = default;

TrayOwner::~TrayOwner()
{
    if (m_connection != nullptr)
        qApp->removeNativeEventFilter(this);
}

void TrayOwner::start(Callbacks callbacks)
{
    m_callbacks = std::move(callbacks);
    m_connection = connectionOfApplication();
    if (m_connection == nullptr)
        return;
    m_atoms = std::make_unique<Atoms>(m_connection);
    qApp->installNativeEventFilter(this);
    (void)follow(rootWindow()); // a new owner is announced there
    lookLater();
}

std::optional<QColor> TrayOwner::foreground() const
{
    if (m_window == 0)
        return std::nullopt;
    const auto channels = cardinals(m_atoms->colours, XCB_ATOM_CARDINAL);
    if (channels.size() < foregroundChannels)
        return std::nullopt;
    const auto eightBits = [&](std::size_t i) { return static_cast<int>(channels[i] >> 8 & 0xff); };
    return QColor(eightBits(0), eightBits(1), eightBits(2));
}

bool TrayOwner::hasAlpha() const
{
    if (m_window == 0)
        return false;
    const auto visual = cardinals(m_atoms->visual, XCB_ATOM_VISUALID);
    return !visual.empty() && depthOf(m_connection, visual.front()) == 32;
}

void TrayOwner::dock(WId window)
{
    const auto id = static_cast<xcb_window_t>(window);
    const std::array<std::uint32_t, 2> info{protocolVersion, isMapped};
    xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, id, m_atoms->embedInfo,
                        m_atoms->embedInfo, 32, info.size(), info.data());
    xcb_client_message_event_t request{};
    request.response_type = XCB_CLIENT_MESSAGE;
    request.format = 32;
    request.window = m_window;
    request.type = m_atoms->opcode;
    request.data.data32[0] = XCB_CURRENT_TIME;
    request.data.data32[1] = requestDock;
    request.data.data32[2] = id;
    xcb_send_event(m_connection, 0, m_window, XCB_EVENT_MASK_NO_EVENT,
                   reinterpret_cast<const char*>(&request));
    xcb_flush(m_connection);
}

QImage TrayOwner::background(WId window, QSize pixels) const
{
    const auto id = static_cast<xcb_window_t>(window);
    const std::uint32_t parentRelative = XCB_BACK_PIXMAP_PARENT_RELATIVE;
    const auto asked =
        xcb_change_window_attributes_checked(m_connection, id, XCB_CW_BACK_PIXMAP, &parentRelative);
    if (owned(xcb_request_check(m_connection, asked)))
        return {};
    const auto width = static_cast<std::uint16_t>(pixels.width());
    const auto height = static_cast<std::uint16_t>(pixels.height());
    xcb_clear_area(m_connection, 0, id, 0, 0, width, height);
    const auto picture = owned(xcb_get_image_reply(
        m_connection,
        xcb_get_image(m_connection, XCB_IMAGE_FORMAT_Z_PIXMAP, id, 0, 0, width, height, ~0U),
        nullptr));
    QImage result(pixels, QImage::Format_RGB32);
    const auto bytes = static_cast<int>(result.sizeInBytes());
    if (!picture || xcb_get_image_data_length(picture.get()) != bytes)
        return {};
    std::memcpy(result.bits(), xcb_get_image_data(picture.get()), static_cast<std::size_t>(bytes));
    return result;
}

bool TrayOwner::nativeEventFilter(const QByteArray& eventType, void* message, qintptr*)
{
    if (eventType != "xcb_generic_event_t")
        return false;
    const auto* event = static_cast<const xcb_generic_event_t*>(message);
    switch (event->response_type & 0x7f) {
    case XCB_CLIENT_MESSAGE: {
        const auto* sent = static_cast<const xcb_client_message_event_t*>(message);
        if (sent->type == m_atoms->manager && sent->data.data32[1] == m_atoms->selection)
            lookLater();
        break;
    }
    case XCB_DESTROY_NOTIFY:
        if (static_cast<const xcb_destroy_notify_event_t*>(message)->window == m_window)
            lookLater();
        break;
    case XCB_PROPERTY_NOTIFY: {
        const auto* changed = static_cast<const xcb_property_notify_event_t*>(message);
        if (changed->window == m_window && changed->atom == m_atoms->colours)
            QMetaObject::invokeMethod(this, m_callbacks.onColours, Qt::QueuedConnection);
        break;
    }
    case XCB_REPARENT_NOTIFY: {
        const auto* moved = static_cast<const xcb_reparent_notify_event_t*>(message);
        const auto taken = [this, window = moved->window] { m_callbacks.onTaken(window); };
        if (moved->parent != rootWindow())
            QMetaObject::invokeMethod(this, taken, Qt::QueuedConnection);
        break;
    }
    default:
        break;
    }
    return false;
}

// Not amid an event of the window that may have to go.
void TrayOwner::lookLater()
{
    QMetaObject::invokeMethod(
        this, [this] { look(); }, Qt::QueuedConnection);
}

void TrayOwner::look()
{
    const auto asked = xcb_get_selection_owner(m_connection, m_atoms->selection);
    const auto reply = owned(xcb_get_selection_owner_reply(m_connection, asked, nullptr));
    xcb_window_t window = reply ? reply->owner : static_cast<xcb_window_t>(XCB_WINDOW_NONE);
    if (window != XCB_WINDOW_NONE && !follow(window))
        window = XCB_WINDOW_NONE; // gone in between; the next one is announced
    if (window == m_window)
        return;
    m_window = window;
    m_callbacks.onOwner();
}

// Adds to what the library below has asked for already.
bool TrayOwner::follow(std::uint32_t window) const
{
    const auto asked = xcb_get_window_attributes(m_connection, window);
    const auto known = owned(xcb_get_window_attributes_reply(m_connection, asked, nullptr));
    if (!known)
        return false;
    const std::uint32_t events =
        known->your_event_mask | XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_PROPERTY_CHANGE;
    const auto selected =
        xcb_change_window_attributes_checked(m_connection, window, XCB_CW_EVENT_MASK, &events);
    return !owned(xcb_request_check(m_connection, selected));
}

std::uint32_t TrayOwner::rootWindow() const
{
    return xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
}

std::vector<std::uint32_t> TrayOwner::cardinals(std::uint32_t name, std::uint32_t type) const
{
    constexpr std::uint32_t most = 16;
    const auto asked = xcb_get_property(m_connection, 0, m_window, name, type, 0, most);
    const auto reply = owned(xcb_get_property_reply(m_connection, asked, nullptr));
    if (!reply || reply->format != 32)
        return {};
    const auto* first = static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()));
    const auto count = xcb_get_property_value_length(reply.get()) / int{sizeof(std::uint32_t)};
    return {first, first + count};
}

} // namespace vellumor
