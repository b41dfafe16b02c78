#include "base/Json.h"

#include "base/Text.h"

#include <algorithm>
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

// Where the string ends that begins with the quote at `open`; the end of the bytes when it does
// not.
std::size_t closingQuote(std::string_view bytes, std::size_t open)
{
    for (auto quote = bytes.find('"', open + 1); quote != std::string_view::npos;
         quote = bytes.find('"', quote + 1)) {
        std::size_t backslashes = 0;
        while (bytes[quote - 1 - backslashes] == '\\') // which the opening quote ends
            ++backslashes;
        if (backslashes % 2 == 0)
            return quote;
    }
    return bytes.size();
}

} // namespace

bool isNestedWithin(std::string_view bytes, int limit)
{
    // Most bytes do not even have so many brackets, which is cheap to tell.
    if (std::count(bytes.begin(), bytes.end(), '{') + std::count(bytes.begin(), bytes.end(), '[') <=
        limit)
        return true;
    int depth = 0;
    for (std::size_t at = 0; at < bytes.size(); ++at) {
        switch (bytes[at]) {
        case '"':
            at = closingQuote(bytes, at);
            break;
        case '{':
        case '[':
            if (++depth > limit)
                return false;
            break;
        case '}':
        case ']':
            --depth;
            break;
        default:
            break;
        }
    }
    return true;
}

bool hasAtMostValues(std::string_view bytes, std::size_t limit)
{
    std::size_t separators = 0;
    for (const char separator : {',', '[', '{'})
        separators += static_cast<std::size_t>(std::count(bytes.begin(), bytes.end(), separator));
    return separators <= limit;
}

std::optional<Json> parseJson(std::string_view bytes)
{
    // The parser would take a zero byte for the end, and not look at what follows.
    if (bytes.find('\0') != std::string_view::npos || !isNestedWithin(bytes, maxJsonDepth) ||
        !hasAtMostValues(bytes, maxJsonValues))
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
        if (slashes == JsonSlashes::plain)
            return text;
        return Text::replaced(std::move(text), "/",
                              "\\/");   // a slash can stand only inside a string
    } catch (const Json::type_error&) { // a string that is not UTF-8
        return std::nullopt;
    }
}

} // namespace vellumor
