#include "cli/StatusDecoding.h"

#include "platform/linux/GioCall.h"
#include "status/StatusKeys.h"

#include <memory>

namespace vellumor::StatusDecoding {

namespace {

namespace Keys = StatusKeys;
using Variant = std::unique_ptr<GVariant, Releases<g_variant_unref>>;

Variant valueOf(GVariant* map, const char* key, const char* type)
{
    return Variant(g_variant_lookup_value(map, key, G_VARIANT_TYPE(type)));
}

std::string textOf(GVariant* text)
{
    gsize size = 0;
    const gchar* const bytes = g_variant_get_string(text, &size);
    return {bytes, size};
}

std::string text(GVariant* map, const char* key)
{
    const Variant value = valueOf(map, key, "s");
    return value == nullptr ? std::string() : textOf(value.get());
}

bool boolean(GVariant* map, const char* key)
{
    const Variant value = valueOf(map, key, "b");
    return value != nullptr && g_variant_get_boolean(value.get()) != FALSE;
}

double number(GVariant* map, const char* key)
{
    const Variant value = valueOf(map, key, "d");
    return value == nullptr ? 0 : g_variant_get_double(value.get());
}

std::optional<Instant> moment(GVariant* map, const char* key)
{
    const Variant value = valueOf(map, key, "x");
    if (value == nullptr || g_variant_get_int64(value.get()) == 0)
        return std::nullopt;
    constexpr double microseconds = 1e6; // within the calendar, whatever was sent
    return instantFromSeconds(static_cast<double>(g_variant_get_int64(value.get())) / microseconds);
}

// Calls `each` with every element of the list behind `key`.
template <typename Each>
void forEach(GVariant* map, const char* key, const char* type, Each each)
{
    const Variant list = valueOf(map, key, type);
    const gsize count = list == nullptr ? 0 : g_variant_n_children(list.get());
    for (gsize i = 0; i < count; ++i) {
        const Variant child(g_variant_get_child_value(list.get(), i));
        each(child.get());
    }
}

StatusWindow windowOf(GVariant* map)
{
    StatusWindow window;
    window.kind = text(map, Keys::kind);
    window.title = text(map, Keys::title);
    window.percent = number(map, Keys::percent);
    window.percentText = text(map, Keys::percentText);
    window.resetsAt = moment(map, Keys::resetsAt);
    window.resetText = text(map, Keys::resetText);
    window.isActive = boolean(map, Keys::active);
    window.scope = text(map, Keys::scope);
    window.isStale = boolean(map, Keys::stale);
    return window;
}

StatusAccount accountOf(GVariant* map)
{
    StatusAccount account;
    account.id = text(map, Keys::id);
    account.name = text(map, Keys::name);
    account.state = text(map, Keys::state);
    account.credits = text(map, Keys::credits);
    account.areCreditsExhausted = boolean(map, Keys::creditsExhausted);
    account.forecast = text(map, Keys::forecast);
    account.updatedAt = moment(map, Keys::updatedAt);
    forEach(map, Keys::windows, "aa{sv}",
            [&](GVariant* window) { account.windows.push_back(windowOf(window)); });
    forEach(map, Keys::notes, "as", [&](GVariant* note) { account.notes.push_back(textOf(note)); });
    return account;
}

} // namespace

std::optional<StatusReport> report(GVariant* answer)
{
    if (!g_variant_is_of_type(answer, G_VARIANT_TYPE("(a{sv})")))
        return std::nullopt;
    const Variant properties(g_variant_get_child_value(answer, 0));
    if (valueOf(properties.get(), "Accounts", "aa{sv}") == nullptr)
        return std::nullopt;
    StatusReport report;
    report.updatedAt = moment(properties.get(), "LastUpdate");
    forEach(properties.get(), "Accounts", "aa{sv}",
            [&](GVariant* account) { report.accounts.push_back(accountOf(account)); });
    return report;
}

} // namespace vellumor::StatusDecoding
