#include "cli/LocaleTime.h"

#include "base/LocalTime.h"
#include "base/Text.h"

#include <fmt/format.h>

#include <langinfo.h>

namespace vellumor::LocaleTime {

namespace {

constexpr int noon = 12;

// What the locale calls its time of day, without shorthands.
std::string patternOfLocale()
{
    std::string pattern = ::nl_langinfo(T_FMT);
    pattern = Text::replaced(pattern, "%r", ::nl_langinfo(T_FMT_AMPM));
    pattern = Text::replaced(pattern, "%T", "%H:%M:%S");
    return Text::replaced(pattern, "%R", "%H:%M");
}

std::string twoFigures(int number)
{
    return fmt::format("{:02}", number);
}

// By the twelve-hour clock nobody writes a nought before the hour.
std::string twelveHour(int hour)
{
    return std::to_string(hour % noon == 0 ? noon : hour % noon);
}

std::optional<std::string> part(char letter, const std::tm& fields, std::string_view half)
{
    switch (letter) {
    case 'H':
        return twoFigures(fields.tm_hour);
    case 'k':
        return std::to_string(fields.tm_hour);
    case 'I':
    case 'l':
        return twelveHour(fields.tm_hour);
    case 'M':
        return twoFigures(fields.tm_min);
    case 'p':
        return std::string(half);
    default:
        return std::nullopt;
    }
}

} // namespace

std::string shortened(std::string_view pattern)
{
    std::string text(pattern);
    for (const char* more : {":%S", ".%S", " %S", "%S", "%Z"})
        text = Text::replaced(text, more, "");
    return std::string(Text::trimmed(text));
}

std::optional<std::string> text(std::string_view pattern, const std::tm& fields,
                                std::string_view half)
{
    std::string text;
    while (!pattern.empty()) {
        if (static_cast<unsigned char>(pattern.front()) >= 0x80)
            return std::nullopt; // words, as where the hours and the minutes bear their names
        if (pattern.front() != '%') {
            text += pattern.front();
            pattern.remove_prefix(1);
            continue;
        }
        const auto written = pattern.size() < 2 ? std::nullopt : part(pattern[1], fields, half);
        if (!written)
            return std::nullopt;
        text += *written;
        pattern.remove_prefix(2);
    }
    return text.empty() ? std::nullopt : std::optional(std::string(Text::trimmed(text)));
}

std::string shortText(Instant instant)
{
    const std::tm fields = LocalTime::fields(instant);
    const char* const half = ::nl_langinfo(fields.tm_hour < noon ? AM_STR : PM_STR);
    const auto written = text(shortened(patternOfLocale()), fields, half);
    return written.value_or(twoFigures(fields.tm_hour) + ":" + twoFigures(fields.tm_min));
}

} // namespace vellumor::LocaleTime
