#include "telemetry/TelemetryScrubber.h"

#include "base/Text.h"

#include <utf8proc.h>

#include <algorithm>
#include <array>

// No regular expressions, though each of these is one: they would have to be of a library that
// keeps to linear time.
namespace vellumor::TelemetryScrubber {

namespace {

constexpr std::size_t tokenRun = 32;
constexpr std::size_t longestPlainEy = 40; // what begins with "ey" and is longer is a web token

bool isSpace(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

bool isAsciiAlphanumeric(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

bool isHexadecimal(char c)
{
    return (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F') || (c >= '0' && c <= '9');
}

bool isOfToken(char c)
{
    return isAsciiAlphanumeric(c) || c == '_' || c == '-';
}

// `prefix` in lower case.
bool beginsLowered(std::string_view value, std::string_view prefix)
{
    return value.size() >= prefix.size() &&
           std::equal(prefix.begin(), prefix.end(), value.begin(), [](char wanted, char c) {
               return wanted == (c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c);
           });
}

// From the character behind an "@": a dot with something on both sides before the next blank.
bool beginsWithDomain(std::string_view text)
{
    const auto end =
        std::find_if(text.begin(), text.end(), [](char c) { return c == '@' || isSpace(c); });
    text = text.substr(0, static_cast<std::size_t>(end - text.begin()));
    return text.size() > 2 && text.substr(1, text.size() - 2).find('.') != std::string_view::npos;
}

bool isOfWord(utf8proc_int32_t c)
{
    switch (utf8proc_category(c)) {
    case UTF8PROC_CATEGORY_LU:
    case UTF8PROC_CATEGORY_LL:
    case UTF8PROC_CATEGORY_LT:
    case UTF8PROC_CATEGORY_LM:
    case UTF8PROC_CATEGORY_LO:
    case UTF8PROC_CATEGORY_ND:
        return true;
    default:
        return c == '_';
    }
}

// How many bytes from `at` on are one character, and whether a word can hold it.
std::pair<std::size_t, bool> characterAt(std::string_view text, std::size_t at)
{
    const char c = text[at];
    if (static_cast<unsigned char>(c) < 0x80)
        return {1, isAsciiAlphanumeric(c) || c == '_'};
    utf8proc_int32_t codePoint = -1;
    const auto size = utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(text.data() + at),
                                       static_cast<utf8proc_ssize_t>(text.size() - at), &codePoint);
    if (size <= 0)
        return {1, false};
    return {static_cast<std::size_t>(size), isOfWord(codePoint)};
}

} // namespace

TelemetryProperties scrub(const TelemetryProperties& properties, Digests suppressed)
{
    TelemetryProperties kept;
    for (const auto& [key, value] : properties) {
        if (!mustDrop(value, suppressed))
            kept.emplace(key, value);
    }
    return kept;
}

bool mustDrop(std::string_view value, Digests suppressed)
{
    return holdsAddress(value) || looksLikeAbsolutePath(value) || isUuid(value) ||
           looksLikeSecret(value) || forwardsCodename(value, suppressed) ||
           !Text::isValidUtf8(value);
}

bool holdsAddress(std::string_view value)
{
    for (auto at = value.find('@'); at != std::string_view::npos; at = value.find('@', at + 1)) {
        const bool hasName = at > 0 && value[at - 1] != '@' && !isSpace(value[at - 1]);
        if (hasName && beginsWithDomain(value.substr(at + 1)))
            return true;
    }
    return false;
}

bool looksLikeAbsolutePath(std::string_view value)
{
    constexpr std::array<std::string_view, 5> folders = {"/Users/", "/home/", "/var/", "/private/",
                                                         "/tmp/"};
    if (value.starts_with("/") || value.starts_with("~/"))
        return true;
    return std::any_of(folders.begin(), folders.end(), [&](std::string_view folder) {
        return value.find(folder) != std::string_view::npos;
    });
}

bool isUuid(std::string_view value)
{
    constexpr std::string_view form = "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx";
    return value.size() == form.size() &&
           std::equal(value.begin(), value.end(), form.begin(), [](char c, char wanted) {
               return wanted == '-' ? c == '-' : isHexadecimal(c);
           });
}

bool looksLikeSecret(std::string_view value)
{
    if (beginsLowered(value, "sk-") || beginsLowered(value, "bearer "))
        return true;
    if (beginsLowered(value, "ey") && Text::length(value) > longestPlainEy)
        return true;
    std::size_t run = 0;
    return std::any_of(value.begin(), value.end(), [&](char c) {
        run = isOfToken(c) ? run + 1 : 0;
        return run >= tokenRun;
    });
}

bool forwardsCodename(std::string_view value, Digests suppressed)
{
    const std::string_view whole = Text::trimmed(value);
    if (SuppressedKinds::isSuppressed(whole, suppressed))
        return true;
    std::size_t begin = 0; // of the word that is being read
    for (std::size_t at = 0; at <= whole.size();) {
        const auto [size, isInWord] =
            at < whole.size() ? characterAt(whole, at) : std::pair<std::size_t, bool>(1, false);
        if (!isInWord) {
            if (at > begin &&
                SuppressedKinds::isSuppressed(whole.substr(begin, at - begin), suppressed))
                return true;
            begin = at + size;
        }
        at += size;
    }
    return false;
}

} // namespace vellumor::TelemetryScrubber
