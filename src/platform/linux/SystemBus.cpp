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

// Any answer will do, an error too.
void ask(GDBusConnection* connection, const SystemBus::Property& property,
         GCancellable* cancellable)
{
    using Variant = std::unique_ptr<GVariant, Releases<g_variant_unref>>;
    const Variant answer(g_dbus_connection_call_sync(
        connection, property.service, property.path, "org.freedesktop.DBus.Properties", "Get",
        g_variant_new("(ss)", property.interface, property.name), nullptr,
        G_DBUS_CALL_FLAGS_NO_AUTO_START, -1, cancellable, nullptr));
}

} // namespace

bool SystemBus::isSilent(const std::string& address, const std::optional<Property>& property,
                         std::chrono::milliseconds limit)
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
    if (property)
        ask(connection.get(), *property, deadline.cancellable());
    const bool isSilent = deadline.passed();
    g_dbus_connection_close_sync(connection.get(), nullptr, nullptr);
    return isSilent;
}

} // namespace vellumor
