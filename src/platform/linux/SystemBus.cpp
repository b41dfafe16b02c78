#include "platform/linux/SystemBus.h"

#include "platform/linux/GioCall.h"

namespace vellumor {

namespace {

std::string usualAddress(GCancellable* cancellable)
{
    gchar* const found = g_dbus_address_get_for_bus_sync(G_BUS_TYPE_SYSTEM, cancellable, nullptr);
    std::string address = found == nullptr ? "" : found;
    g_free(found);
    return address;
}

} // namespace

bool SystemBus::isSilent(const std::string& address, std::chrono::milliseconds limit)
{
    const CallContext context;
    const Deadline deadline(limit);
    const std::string place = address.empty() ? usualAddress(deadline.cancellable()) : address;
    constexpr auto flags =
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    const Object<GDBusConnection> connection(g_dbus_connection_new_for_address_sync(
        place.c_str(), flags, nullptr, deadline.cancellable(), nullptr));
    if (connection == nullptr)
        return deadline.passed();
    g_dbus_connection_close_sync(connection.get(), deadline.cancellable(), nullptr);
    return false;
}

} // namespace vellumor
