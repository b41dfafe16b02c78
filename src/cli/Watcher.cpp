#include "cli/Watcher.h"

#include "cli/BusClient.h"

#include <glib-unix.h>
#include <unistd.h>

namespace vellumor {

namespace {

constexpr const char* busName = "org.freedesktop.DBus";
constexpr const char* busPath = "/org/freedesktop/DBus";

} // namespace

Watcher::Watcher(GDBusConnection* connection, std::function<bool()> onChange)
    : m_connection(connection)
    , m_onChange(std::move(onChange))
    , m_loop(g_main_loop_new(nullptr, FALSE))
{
    const auto changed = [](GDBusConnection*, const gchar*, const gchar*, const gchar*,
                            const gchar*, GVariant*,
                            gpointer self) { static_cast<Watcher*>(self)->look(); };
    m_signal = g_dbus_connection_signal_subscribe(
        m_connection, BusClient::name, BusClient::interface, "Changed", BusClient::path, nullptr,
        G_DBUS_SIGNAL_FLAGS_NONE, changed, this, nullptr);
    m_name = g_dbus_connection_signal_subscribe(m_connection, busName, busName, "NameOwnerChanged",
                                                busPath, BusClient::name, G_DBUS_SIGNAL_FLAGS_NONE,
                                                changed, this, nullptr);
    const auto ended = [](gint, GIOCondition, gpointer self) -> gboolean {
        g_main_loop_quit(static_cast<Watcher*>(self)->m_loop.get());
        return G_SOURCE_CONTINUE;
    };
    m_reader =
        g_unix_fd_add(STDOUT_FILENO, static_cast<GIOCondition>(G_IO_ERR | G_IO_HUP), ended, this);
    const auto closed = +[](GDBusConnection*, gboolean, GError*, Watcher* self) {
        g_main_loop_quit(self->m_loop.get());
    };
    m_closed = g_signal_connect(m_connection, "closed", G_CALLBACK(closed), this);
}

Watcher::~Watcher()
{
    g_signal_handler_disconnect(m_connection, m_closed);
    g_source_remove(m_reader);
    g_dbus_connection_signal_unsubscribe(m_connection, m_name);
    g_dbus_connection_signal_unsubscribe(m_connection, m_signal);
}

// What has changed between the first print and the subscription is not lost.
void Watcher::run()
{
    const auto first = [](gpointer self) -> gboolean {
        static_cast<Watcher*>(self)->look();
        return G_SOURCE_REMOVE;
    };
    g_idle_add(first, this);
    if (g_dbus_connection_is_closed(m_connection) == FALSE)
        g_main_loop_run(m_loop.get());
}

void Watcher::look()
{
    if (!m_onChange())
        g_main_loop_quit(m_loop.get());
}

} // namespace vellumor
