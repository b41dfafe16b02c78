#include "usage/model/RawUsage.h"

#include "base/Json.h"
#include "base/StrictReader.h"

namespace vellumor {

namespace {

const Json* member(const Json& json, const char* key)
{
    if (!json.is_object())
        return nullptr;
    const auto found = json.find(key);
    return found == json.end() ? nullptr : &*found;
}

// The value under `key` if it is there and has the type that `convert` asks for.
template <typename T>
std::optional<T> tolerant(const Json& json, const char* key,
                          std::optional<T> (*convert)(const Json&))
{
    const Json* found = member(json, key);
    return found != nullptr ? convert(*found) : std::nullopt;
}

// A model or surface: its bare name, or an object with one.
std::optional<std::string> entityName(const Json* entity)
{
    if (entity == nullptr)
        return std::nullopt;
    if (entity->is_string())
        return asString(*entity);
    return tolerant(*entity, "display_name", asString);
}

std::optional<std::string> nonEmpty(std::optional<std::string> name)
{
    if (name && name->empty())
        return std::nullopt;
    return name;
}

// A bare name ends the search, an empty one too; otherwise the model's name if it has one, else the
// surface's.
std::optional<std::string> scopeName(const Json* scope)
{
    if (scope == nullptr)
        return std::nullopt;
    if (scope->is_string())
        return nonEmpty(asString(*scope));
    auto name = entityName(member(*scope, "model"));
    if (!name)
        name = entityName(member(*scope, "surface"));
    return nonEmpty(std::move(name));
}

} // namespace

std::vector<RawUsage::Limit> RawUsage::limits() const
{
    std::vector<Limit> limits;
    const Json* rows = member(m_json, "limits");
    if (rows == nullptr || !rows->is_array())
        return limits;
    limits.reserve(rows->size());
    for (const Json& row : *rows) {
        limits.push_back({tolerant(row, "kind", asString), tolerant(row, "group", asString),
                          tolerant(row, "percent", asDouble), tolerant(row, "severity", asString),
                          tolerant(row, "resets_at", asString), scopeName(member(row, "scope")),
                          tolerant(row, "is_active", asBool)});
    }
    return limits;
}

std::optional<RawUsage::Slot> RawUsage::slot(const char* key) const
{
    const Json* slot = member(m_json, key);
    if (slot == nullptr || !slot->is_object())
        return std::nullopt;
    return Slot{tolerant(*slot, "utilization", asDouble), tolerant(*slot, "resets_at", asString)};
}

std::optional<ExtraUsage> RawUsage::extraUsage() const
{
    const Json* extra = member(m_json, "extra_usage");
    if (extra == nullptr || !extra->is_object())
        return std::nullopt;
    ExtraUsage usage;
    usage.isEnabled = tolerant(*extra, "is_enabled", asBool).value_or(false);
    usage.usedCredits = tolerant(*extra, "used_credits", asDouble);
    usage.currency = tolerant(*extra, "currency", asString);
    usage.decimalPlaces = tolerant(*extra, "decimal_places", asInt);
    usage.monthlyLimit = tolerant(*extra, "monthly_limit", asDouble);
    usage.utilization = tolerant(*extra, "utilization", asDouble);
    usage.userDisabled = tolerant(*extra, "user_disabled", asBool);
    usage.spendLimitReached = tolerant(*extra, "spend_limit_reached", asBool);
    usage.creditsEverEnabled = tolerant(*extra, "credits_ever_enabled", asBool);
    return usage;
}

} // namespace vellumor
