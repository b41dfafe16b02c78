#include "usage/model/RawUsage.h"

#include "base/Json.h"
#include "base/StrictReader.h"

#include <algorithm>
#include <charconv>

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

constexpr std::string_view decimalDigits = "0123456789";

// A number of JSON that no double can hold.
bool isBeyondDouble(std::string_view number)
{
    double value = 0;
    const char* const end = number.data() + number.size();
    const auto [stop, problem] = std::from_chars(number.data(), end, value);
    if (problem != std::errc::result_out_of_range || stop != end)
        return false;
    // "01", ".1" and "1." are numbers elsewhere.
    number.remove_prefix(number.front() == '-' ? 1 : 0);
    const auto fraction = number.find('.');
    const bool isWholeGood = number.front() != '.' &&
                             (number.front() != '0' || number.find_first_of(decimalDigits, 1) != 1);
    return isWholeGood && (fraction == std::string_view::npos ||
                           number.find_first_of(decimalDigits, fraction) == fraction + 1);
}

// Where the text ends that begins with the quote at `open`.
std::size_t behindText(std::string_view bytes, std::size_t open)
{
    std::size_t at = open + 1;
    while (at < bytes.size() && bytes[at] != '"')
        at += bytes[at] == '\\' ? 2U : 1U;
    return std::min(at + 1, bytes.size());
}

// The same bytes, with null for each number that no double can hold. They may not even be JSON.
std::string withoutLargeNumbers(std::string_view bytes)
{
    std::string kept;
    std::size_t end = 0;
    for (std::size_t at = 0; at < bytes.size(); at = end) {
        if (bytes[at] == '"') {
            end = behindText(bytes, at);
        } else if (bytes[at] == '-' || decimalDigits.find(bytes[at]) != std::string_view::npos) {
            end = std::min(bytes.find_first_not_of("+-.0123456789Ee", at), bytes.size());
            if (isBeyondDouble(bytes.substr(at, end - at))) {
                kept += "null";
                continue;
            }
        } else {
            end = std::min(bytes.find_first_of("\"-0123456789", at), bytes.size());
        }
        kept += bytes.substr(at, end - at);
    }
    return kept;
}

} // namespace

// The parser gives up at such a number, which hardly ever comes.
std::optional<Json> RawUsage::parse(std::string_view bytes)
{
    auto json = parseJson(bytes);
    return json ? std::move(json) : parseJson(withoutLargeNumbers(bytes));
}

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
