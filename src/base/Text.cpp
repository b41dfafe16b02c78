#include "base/Text.h"

#include <fmt/format.h>
#include <utf8proc.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace vellumor::Text {

namespace {

struct Decoded {
    utf8proc_int32_t codePoint = -1; // -1: not valid UTF-8 here
    std::size_t size = 1;            // in bytes
};

Decoded decodeFirst(std::string_view text)
{
    Decoded decoded;
    const auto size =
        utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
                         static_cast<utf8proc_ssize_t>(text.size()), &decoded.codePoint);
    if (size > 0)
        decoded.size = static_cast<std::size_t>(size);
    else
        decoded.codePoint = -1;
    return decoded;
}

// Calls `visit(codePoint, bytes)` for each character.
template <typename Visit>
void forEach(std::string_view text, Visit visit)
{
    while (!text.empty()) {
        const Decoded decoded = decodeFirst(text);
        visit(decoded.codePoint, text.substr(0, decoded.size));
        text.remove_prefix(decoded.size);
    }
}

void append(std::string& text, utf8proc_int32_t codePoint)
{
    utf8proc_uint8_t bytes[4];
    const auto size = utf8proc_encode_char(codePoint, bytes);
    text.append(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(size));
}

bool isSpace(utf8proc_int32_t c)
{
    if ((c >= 0x09 && c <= 0x0D) || c == 0x85)
        return true;
    const auto category = utf8proc_category(c);
    return category == UTF8PROC_CATEGORY_ZS || category == UTF8PROC_CATEGORY_ZL ||
           category == UTF8PROC_CATEGORY_ZP;
}

std::string_view firstCharacter(std::string_view text)
{
    return text.substr(0, decodeFirst(text).size);
}

// From the last byte that can begin a character; of broken text perhaps more than one character.
std::string_view lastCharacter(std::string_view text)
{
    std::size_t begin = text.size() - 1;
    while (begin > 0 && (static_cast<unsigned char>(text[begin]) & 0xC0) == 0x80)
        --begin;
    return text.substr(begin);
}

bool isSpaceCharacter(std::string_view character)
{
    const Decoded decoded = decodeFirst(character);
    return decoded.codePoint >= 0 && decoded.size == character.size() && isSpace(decoded.codePoint);
}

bool isLetterOrDigit(utf8proc_int32_t c)
{
    switch (utf8proc_category(c)) {
    case UTF8PROC_CATEGORY_LU:
    case UTF8PROC_CATEGORY_LL:
    case UTF8PROC_CATEGORY_LT:
    case UTF8PROC_CATEGORY_LM:
    case UTF8PROC_CATEGORY_LO:
    case UTF8PROC_CATEGORY_ND:
    case UTF8PROC_CATEGORY_NL:
    case UTF8PROC_CATEGORY_NO:
        return true;
    default:
        return false;
    }
}

bool isCombiningMark(utf8proc_int32_t c)
{
    const auto category = utf8proc_category(c);
    return category == UTF8PROC_CATEGORY_MN || category == UTF8PROC_CATEGORY_MC ||
           category == UTF8PROC_CATEGORY_ME;
}

bool isUnprintable(utf8proc_int32_t c)
{
    if (c < 0 || (c >= 0x202A && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069))
        return true;
    const auto category = utf8proc_category(c);
    return category == UTF8PROC_CATEGORY_CC || category == UTF8PROC_CATEGORY_ZL ||
           category == UTF8PROC_CATEGORY_ZP;
}

std::size_t columnsOf(utf8proc_int32_t c)
{
    return c < 0 ? 1U : static_cast<std::size_t>(utf8proc_charwidth(c));
}

bool isAscii(std::string_view text)
{
    std::uint64_t bits = 0; // of all characters, eight at a time
    for (; text.size() >= sizeof bits; text.remove_prefix(sizeof bits)) {
        std::uint64_t word = 0;
        std::memcpy(&word, text.data(), sizeof word);
        bits |= word;
    }
    for (const char c : text)
        bits |= static_cast<unsigned char>(c);
    return (bits & 0x8080808080808080U) == 0;
}

} // namespace

bool isValidUtf8(std::string_view text)
{
    if (isAscii(text))
        return true;
    bool valid = true;
    forEach(text, [&](utf8proc_int32_t c, std::string_view) { valid = valid && c >= 0; });
    return valid;
}

std::string composed(std::string_view text)
{
    if (isAscii(text))
        return std::string(text);
    utf8proc_uint8_t* mapped = nullptr;
    const auto size =
        utf8proc_map(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
                     static_cast<utf8proc_ssize_t>(text.size()), &mapped,
                     static_cast<utf8proc_option_t>(UTF8PROC_STABLE | UTF8PROC_COMPOSE));
    const std::unique_ptr<utf8proc_uint8_t, decltype(&std::free)> owned(mapped, &std::free);
    if (size < 0)
        return std::string(text);
    return {reinterpret_cast<const char*>(owned.get()), static_cast<std::size_t>(size)};
}

std::string_view trimmed(std::string_view text)
{
    while (!text.empty() && isSpaceCharacter(firstCharacter(text)))
        text.remove_prefix(firstCharacter(text).size());
    while (!text.empty() && isSpaceCharacter(lastCharacter(text)))
        text.remove_suffix(lastCharacter(text).size());
    return text;
}

std::string capitalised(std::string_view text)
{
    std::string result;
    bool inWord = false;
    forEach(text, [&](utf8proc_int32_t c, std::string_view bytes) {
        if (c < 0)
            result.append(bytes);
        else
            append(result, inWord ? utf8proc_tolower(c) : utf8proc_toupper(c));
        inWord = c >= 0 && isLetterOrDigit(c);
    });
    return result;
}

std::string slug(std::string_view text)
{
    std::string slug;
    bool isInWord = false;
    forEach(composed(text), [&](utf8proc_int32_t c, std::string_view) {
        const bool isMark = c >= 0 && isCombiningMark(c);
        if (c < 0 || !(isLetterOrDigit(c) || (isMark && isInWord))) {
            isInWord = false;
            return;
        }
        if (!isInWord && !slug.empty())
            slug += '-';
        isInWord = true;
        append(slug, utf8proc_tolower(c));
    });
    return slug;
}

std::string withUpperFirst(std::string_view text)
{
    if (text.empty())
        return {};
    const Decoded first = decodeFirst(text);
    if (first.codePoint < 0)
        return std::string(text);
    std::string result;
    append(result, utf8proc_toupper(first.codePoint));
    return result.append(text.substr(first.size));
}

std::size_t length(std::string_view text)
{
    std::size_t count = 0;
    forEach(text, [&](utf8proc_int32_t, std::string_view) { ++count; });
    return count;
}

std::size_t columns(std::string_view text)
{
    std::size_t count = 0;
    forEach(text, [&](utf8proc_int32_t c, std::string_view) { count += columnsOf(c); });
    return count;
}

std::string withinColumns(std::string_view text, std::size_t most)
{
    if (columns(text) <= most)
        return std::string(text);
    std::string kept;
    std::size_t taken = 1; // for what stands in the place of the rest
    forEach(text, [&](utf8proc_int32_t c, std::string_view bytes) {
        taken += columnsOf(c);
        if (taken <= most)
            kept.append(bytes);
    });
    return most == 0 ? "" : kept + "…";
}

std::string printable(std::string_view text)
{
    std::string result;
    result.reserve(text.size());
    forEach(text, [&](utf8proc_int32_t c, std::string_view bytes) {
        if (isUnprintable(c))
            append(result, 0xFFFD);
        else
            result.append(bytes);
    });
    return result;
}

std::string escapedJson(std::string_view json)
{
    std::string result;
    result.reserve(json.size());
    forEach(json, [&](utf8proc_int32_t c, std::string_view bytes) {
        if (c >= 0x7F && isUnprintable(c))
            result += fmt::format("\\u{:04x}", c);
        else
            result.append(bytes);
    });
    return result;
}

std::string replaced(std::string text, std::string_view from, std::string_view to)
{
    if (from.empty() || text.find(from) == std::string::npos)
        return text;
    std::string result;
    std::size_t begin = 0;
    for (auto at = text.find(from); at != std::string::npos; at = text.find(from, begin)) {
        result.append(text, begin, at - begin).append(to);
        begin = at + from.size();
    }
    return result.append(text, begin);
}

} // namespace vellumor::Text
