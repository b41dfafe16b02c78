#include "cli/BusClient.h"

#include "cli/StatusDecoding.h"
#include "platform/linux/SessionBus.h"

namespace vellumor {

namespace {

// A bus, or a program, that says nothing is as good as none.
constexpr std::chrono::milliseconds patience{2000};

Object<GDBusConnection> join(const std::string& address)
{
    if (address == "disabled:")
        return nullptr;
    const Deadline deadline(patience);
    constexpr auto flags =
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    return Object<GDBusConnection>(g_dbus_connection_new_for_address_sync(
        address.c_str(), flags, nullptr, deadline.cancellable(), nullptr));
}

} // namespace

BusClient::BusClient(const Environment& environment)
    : m_connection(join(SessionBus::address(environment)))
{
}

std::optional<StatusReport> BusClient::report() const
{
    if (m_connection == nullptr)
        return std::nullopt;
    using Variant = std::unique_ptr<GVariant, Releases<g_variant_unref>>;
    const Variant answer(g_dbus_connection_call_sync(
        m_connection.get(), name, path, "org.freedesktop.DBus.Properties", "GetAll",
        g_variant_new("(s)", interface), nullptr, G_DBUS_CALL_FLAGS_NO_AUTO_START,
        static_cast<gint>(patience.count()), nullptr, nullptr));
    return answer == nullptr ? std::nullopt : StatusDecoding::report(answer.get());
}

} // namespace vellumor
