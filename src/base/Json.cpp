#include "base/Json.h"

#include <cmath>

namespace vellumor {

namespace {

// Up to here every integer has a double of its own, so that the change of type loses nothing.
constexpr double largestExactInteger = 9007199254740992.0;

void makeIntegral(Json& json)
{
    if (json.is_structured()) {
        for (Json& element : json)
            makeIntegral(element);
        return;
    }
    if (!json.is_number_float())
        return;
    const double number = json.get<double>();
    const bool negativeZero = number == 0.0 && std::signbit(number);
    if (std::trunc(number) == number && std::fabs(number) <= largestExactInteger && !negativeZero)
        json = static_cast<std::int64_t>(number);
}

void escapeSlashes(std::string& text)
{
    // A slash can stand only inside a string.
    for (auto at = text.find('/'); at != std::string::npos; at = text.find('/', at + 2))
        text.insert(at, 1, '\\');
}

} // namespace

bool isNestedWithin(std::string_view bytes, int limit)
{
    int depth = 0;
    bool inString = false;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const char c = bytes[i];
        if (inString) {
            if (c == '\\')
                ++i;
            else if (c == '"')
                inString = false;
        } else if (c == '"') {
            inString = true;
        } else if (c == '{' || c == '[') {
            if (++depth > limit)
                return false;
        } else if (c == '}' || c == ']') {
            --depth;
        }
    }
    return true;
}

std::optional<Json> parseJson(std::string_view bytes)
{
    if (!isNestedWithin(bytes, maxJsonDepth))
        return std::nullopt;
    Json json = Json::parse(bytes, nullptr, false);
    if (json.is_discarded())
        return std::nullopt;
    return json;
}

std::optional<Json> parseJsonObject(std::string_view bytes)
{
    auto json = parseJson(bytes);
    if (json && !json->is_object())
        return std::nullopt;
    return json;
}

std::optional<std::string> writeJson(Json json, JsonLayout layout, JsonSlashes slashes)
{
    makeIntegral(json);
    try {
        std::string text = json.dump(layout == JsonLayout::pretty ? 2 : -1);
        if (slashes == JsonSlashes::escaped)
            escapeSlashes(text);
        return text;
    } catch (const Json::type_error&) { // a string that is not UTF-8
        return std::nullopt;
    }
}

} // namespace vellumor
