#include "platform/linux/SecretServiceKeyring.h"

#include "platform/linux/GioCall.h"
#include "platform/linux/SessionBus.h"

#include "base/Text.h"

#include <gio/gio.h>
#include <libsecret/secret.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <set>
#include <string_view>

namespace vellumor {

namespace {

constexpr const char* serviceName = "org.freedesktop.secrets";
constexpr const char* serviceAttribute = "service";

using Variant = std::unique_ptr<GVariant, Releases<g_variant_unref>>;
using Table = std::unique_ptr<GHashTable, Releases<g_hash_table_unref>>;
using Schema = std::unique_ptr<SecretSchema, Releases<secret_schema_unref>>;
using Value = std::unique_ptr<SecretValue, Releases<secret_value_unref>>;
using ObjectList =
    std::unique_ptr<GList, decltype([](GList* list) { g_list_free_full(list, g_object_unref); })>;

template <typename T, typename Visit>
void forEach(const ObjectList& list, Visit visit)
{
    for (GList* node = list.get(); node != nullptr; node = node->next)
        visit(static_cast<T*>(node->data));
}

// The library binds its service to the name and to the process's one connection, by changing the
// properties that a new object is given. This kind leaves them as they are.
GType boundServiceType()
{
    static const GType type = g_type_register_static_simple(
        SECRET_TYPE_SERVICE, "VellumorBoundSecretService", sizeof(SecretServiceClass),
        [](void* bound, void*) {
            const auto* proxy = static_cast<GObjectClass*>(g_type_class_peek(G_TYPE_DBUS_PROXY));
            static_cast<GObjectClass*>(bound)->constructor = proxy->constructor;
        },
        sizeof(SecretService), nullptr, GTypeFlags{});
    return type;
}

// The library registers the types of its flags when they are asked for first, and does not expect
// two threads to do so at once.
void registerTypes()
{
    [[maybe_unused]] static const bool areRegistered = [] {
        for (const GType type : {SECRET_TYPE_COLLECTION_FLAGS, SECRET_TYPE_ITEM_FLAGS,
                                 SECRET_TYPE_SCHEMA_ATTRIBUTE_TYPE, SECRET_TYPE_SCHEMA_FLAGS,
                                 SECRET_TYPE_SEARCH_FLAGS, SECRET_TYPE_SERVICE_FLAGS})
            g_type_ensure(type);
        return true;
    }();
}

// One call's connection and the service that runs on the bus, if any.
class Call {
public:
    Call(const std::string& busAddress, std::chrono::milliseconds timeout)
        : m_deadline(timeout)
    {
        registerTypes();
        m_connection = connect(SessionBus::reachable(busAddress));
        if (const auto owner = m_connection ? ownerOfService() : std::nullopt)
            openService(*owner);
        else
            m_status = m_deadline.passed() ? RawCredential::failed : RawCredential::absent;
    }

    // Null when there is none; `status` then says why.
    [[nodiscard]] SecretService* service() const { return m_service.get(); }
    [[nodiscard]] int status() const { return m_status; }
    [[nodiscard]] GCancellable* cancellable() const { return m_deadline.cancellable(); }

private:
    [[nodiscard]] Object<GDBusConnection> connect(const std::string& address) const;
    [[nodiscard]] std::optional<std::string> ownerOfService() const;
    void openService(const std::string& owner);

    CallContext m_context; // outlives all that was made in it
    Deadline m_deadline;
    Object<GDBusConnection> m_connection;
    Object<SecretService> m_service;
    int m_status = RawCredential::found;
};

Object<GDBusConnection> Call::connect(const std::string& address) const
{
    if (address.empty())
        return nullptr;
    constexpr auto flags =
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    return Object<GDBusConnection>(g_dbus_connection_new_for_address_sync(
        address.c_str(), flags, nullptr, cancellable(), nullptr));
}

// The connection that owns the name at present. To ask for it starts nothing.
std::optional<std::string> Call::ownerOfService() const
{
    const Variant reply(g_dbus_connection_call_sync(
        m_connection.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
        "GetNameOwner", g_variant_new("(s)", serviceName), G_VARIANT_TYPE("(s)"),
        G_DBUS_CALL_FLAGS_NO_AUTO_START, -1, cancellable(), nullptr));
    if (!reply)
        return std::nullopt;
    const char* owner = nullptr;
    g_variant_get(reply.get(), "(&s)", &owner);
    return owner;
}

// Every message goes to the connection and none to the name: the bus would start a service anew for
// a message to the name, were it to end between two of them.
void Call::openService(const std::string& owner)
{
    m_service.reset(static_cast<SecretService*>(g_initable_new(
        boundServiceType(), cancellable(), nullptr, "g-connection", m_connection.get(), "g-name",
        owner.c_str(), "g-object-path", "/org/freedesktop/secrets", "g-interface-name",
        "org.freedesktop.Secret.Service", "g-flags", G_DBUS_PROXY_FLAGS_DO_NOT_AUTO_START, "flags",
        SECRET_SERVICE_NONE, nullptr)));
    if (!m_service)
        m_status = RawCredential::failed;
}

// An attribute is text that ends at its first zero: another name could only be mistaken for a
// shorter one.
bool canBeAttribute(const std::string& service)
{
    return service.find('\0') == std::string::npos && Text::isValidUtf8(service);
}

// The items whose attribute `service` is this one, locked and unlocked, without their secrets.
// Nothing on an error.
std::optional<ObjectList> itemsOf(const Call& call, const std::string& service)
{
    if (!canBeAttribute(service))
        return ObjectList();
    // Programs name their schemas as they please; the attribute alone counts.
    const Schema schema(secret_schema_new("org.freedesktop.Secret.Generic",
                                          SECRET_SCHEMA_DONT_MATCH_NAME, serviceAttribute,
                                          SECRET_SCHEMA_ATTRIBUTE_STRING, nullptr));
    const Table attributes(
        secret_attributes_build(schema.get(), serviceAttribute, service.c_str(), nullptr));
    GError* error = nullptr;
    // With no more flags than this: to unlock or to load secrets here could raise a prompt.
    ObjectList items(secret_service_search_sync(call.service(), schema.get(), attributes.get(),
                                                SECRET_SEARCH_ALL, call.cancellable(), &error));
    const Error owned(error);
    if (owned)
        return std::nullopt;
    return items;
}

std::optional<std::string> serviceOf(SecretItem* item)
{
    const Table attributes(secret_item_get_attributes(item));
    const void* value =
        attributes ? g_hash_table_lookup(attributes.get(), serviceAttribute) : nullptr;
    if (value == nullptr)
        return std::nullopt;
    return static_cast<const char*>(value);
}

// What cannot be listed is left out.
void listInto(std::set<std::string>& services, const Call& call)
{
    secret_service_load_collections_sync(call.service(), call.cancellable(), nullptr);
    const ObjectList collections(secret_service_get_collections(call.service()));
    forEach<SecretCollection>(collections, [&](SecretCollection* collection) {
        secret_collection_load_items_sync(collection, call.cancellable(), nullptr);
        const ObjectList items(secret_collection_get_items(collection));
        forEach<SecretItem>(items, [&](SecretItem* item) {
            if (auto service = serviceOf(item))
                services.insert(*std::move(service));
        });
    });
}

RawCredential secretOf(SecretItem* item, const Call& call)
{
    GError* error = nullptr;
    secret_item_load_secret_sync(item, call.cancellable(), &error);
    const Error owned(error);
    // Locked since it was found, or its owner said no.
    if (g_error_matches(error, SECRET_ERROR, SECRET_ERROR_IS_LOCKED) != FALSE ||
        g_error_matches(error, G_DBUS_ERROR, G_DBUS_ERROR_ACCESS_DENIED) != FALSE)
        return {RawCredential::denied, {}};
    const Value value(owned ? nullptr : secret_item_get_secret(item));
    if (!value)
        return {RawCredential::failed, {}};
    gsize size = 0;
    const char* bytes = secret_value_get(value.get(), &size);
    if (size > SecretServiceKeyring::maxSecretSize)
        return {RawCredential::failed, {}};
    return {RawCredential::found, SecretBytes(std::string_view(bytes, size))};
}

} // namespace

std::vector<std::string> SecretServiceKeyring::services(const std::vector<std::string>& expected)
{
    std::set<std::string> services;
    const Call call(m_busAddress, m_timeout);
    if (call.service() == nullptr)
        return {};
    // First the few that matter, as a full keyring may take long to list.
    for (const std::string& service : expected) {
        const auto items = itemsOf(call, service);
        if (items && *items != nullptr)
            services.insert(service);
    }
    listInto(services, call);
    return {services.begin(), services.end()};
}

RawCredential SecretServiceKeyring::read(const std::string& service)
{
    const Call call(m_busAddress, m_timeout);
    if (call.service() == nullptr)
        return {call.status(), {}};
    const auto items = itemsOf(call, service);
    if (!items || *items == nullptr)
        return {items ? RawCredential::absent : RawCredential::failed, {}};
    SecretItem* unlocked = nullptr;
    forEach<SecretItem>(*items, [&](SecretItem* item) {
        if (unlocked == nullptr && secret_item_get_locked(item) == FALSE)
            unlocked = item;
    });
    return unlocked != nullptr ? secretOf(unlocked, call)
                               : RawCredential{RawCredential::denied, {}};
}

} // namespace vellumor
