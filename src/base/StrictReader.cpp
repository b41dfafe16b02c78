#include "base/StrictReader.h"

#include "base/Json.h"

#include <cmath>
#include <limits>

namespace vellumor {

std::optional<bool> asBool(const Json& json)
{
    if (!json.is_boolean())
        return std::nullopt;
    return json.get<bool>();
}

std::optional<int> asInt(const Json& json)
{
    if (!json.is_number())
        return std::nullopt;
    const double number = json.get<double>();
    if (std::trunc(number) != number || number < std::numeric_limits<int>::min() ||
        number > std::numeric_limits<int>::max())
        return std::nullopt;
    return static_cast<int>(number);
}

std::optional<double> asDouble(const Json& json)
{
    if (!json.is_number())
        return std::nullopt;
    return json.get<double>();
}

std::optional<std::string> asString(const Json& json)
{
    if (!json.is_string())
        return std::nullopt;
    return json.get_ref<const std::string&>();
}

StrictReader::StrictReader(const Json& json)
    : m_json(json)
    , m_good(json.is_object())
{
}

const Json* StrictReader::find(const char* key) const
{
    if (!m_json.is_object())
        return nullptr;
    const auto found = m_json.find(key);
    return found == m_json.end() || found->is_null() ? nullptr : &*found;
}

void StrictReader::required(const char* key, Instant& into,
                            std::optional<Instant> (*parse)(std::string_view))
{
    std::string text;
    required(key, text);
    if (const auto instant = parse(text))
        into = *instant;
    else
        fail();
}

void StrictReader::optional(const char* key, std::optional<Instant>& into,
                            std::optional<Instant> (*parse)(std::string_view))
{
    if (find(key) == nullptr)
        return;
    Instant instant{};
    required(key, instant, parse);
    if (good())
        into = instant;
}

} // namespace vellumor
