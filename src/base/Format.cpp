#include "base/Format.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>

namespace vellumor::Format {

namespace {

using std::chrono::microseconds;
using std::chrono::sys_days;
using std::chrono::year_month_day;

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

// Reads fixed-width text from the front; the first thing that does not fit makes it fail for good.
class Scanner {
public:
    explicit Scanner(std::string_view text)
        : m_at(text.data())
        , m_end(text.data() + text.size())
    {
    }

    int digits(std::ptrdiff_t count, int least, int most)
    {
        if (m_end - m_at < count)
            return fail();
        int number = 0;
        for (const char* const end = m_at + count; m_at < end; ++m_at) {
            if (!isDigit(*m_at))
                return fail();
            number = number * 10 + (*m_at - '0');
        }
        return number >= least && number <= most ? number : fail();
    }

    void literal(char expected)
    {
        if (!take(expected))
            fail();
    }

    bool take(char c)
    {
        if (m_at == m_end || *m_at != c)
            return false;
        ++m_at;
        return true;
    }

    [[nodiscard]] bool finished() const { return m_isGood && m_at == m_end; }

private:
    int fail()
    {
        m_isGood = false;
        return 0;
    }

    const char* m_at;
    const char* m_end;
    bool m_isGood = true;
};

std::chrono::minutes zoneOffset(Scanner& scanner)
{
    if (scanner.take('Z'))
        return {};
    const bool west = scanner.take('-');
    if (!west)
        scanner.literal('+');
    const int hours = scanner.digits(2, 0, 23);
    scanner.literal(':');
    const int minutes = scanner.digits(2, 0, 59);
    return std::chrono::minutes((west ? -1 : 1) * (hours * 60 + minutes));
}

// `fractionDigits` is how many digits must follow a full stop behind the seconds; 0 means that
// there is none.
std::optional<Instant> parseFixed(std::string_view text, std::ptrdiff_t fractionDigits)
{
    Scanner scanner(text);
    const std::chrono::year year(scanner.digits(4, 1, 9999));
    scanner.literal('-');
    const std::chrono::month month(static_cast<unsigned>(scanner.digits(2, 1, 12)));
    scanner.literal('-');
    const std::chrono::day day(static_cast<unsigned>(scanner.digits(2, 1, 31)));
    scanner.literal('T');
    const std::chrono::hours hours(scanner.digits(2, 0, 23));
    scanner.literal(':');
    const std::chrono::minutes minutes(scanner.digits(2, 0, 59));
    scanner.literal(':');
    const std::chrono::seconds seconds(scanner.digits(2, 0, 59));
    microseconds fraction{};
    if (fractionDigits > 0) {
        scanner.literal('.');
        fraction = microseconds(scanner.digits(fractionDigits, 0, 999999));
        fraction *= fractionDigits == 3 ? 1000 : 1;
    }
    const auto offset = zoneOffset(scanner);
    const year_month_day date(year, month, day);
    if (!scanner.finished() || !date.ok())
        return std::nullopt;
    const Instant local = Instant(sys_days(date)) + hours + minutes + seconds + fraction;
    if (offset == std::chrono::minutes::zero())
        return local;
    const Instant instant = local - offset;
    // An offset may carry the moment into a year that could not be written and read again.
    const int utcYear =
        static_cast<int>(year_month_day(std::chrono::floor<std::chrono::days>(instant)).year());
    if (utcYear < 1 || utcYear > 9999)
        return std::nullopt;
    return instant;
}

// The form that isoFractional writes, without looking at one character after another: files hold
// tens of thousands of them. Nothing means that the text is to be read the ordinary way.
std::optional<Instant> parseOwnForm(std::string_view text)
{
    constexpr std::string_view form = "0000-00-00T00:00:00.000Z";
    if (text.size() != form.size())
        return std::nullopt;
    unsigned wrong = 0;
    for (std::size_t i = 0; i < form.size(); ++i) {
        const auto differs = static_cast<unsigned char>(text[i] - form[i]);
        wrong |= form[i] == '0' ? static_cast<unsigned>(differs > 9) : differs;
    }
    const auto number = [&](std::size_t at, int count) {
        unsigned value = 0;
        for (const std::size_t end = at + static_cast<std::size_t>(count); at < end; ++at)
            value = value * 10 + static_cast<unsigned>(text[at] - '0');
        return value;
    };
    const year_month_day date(std::chrono::year(static_cast<int>(number(0, 4))),
                              std::chrono::month(number(5, 2)), std::chrono::day(number(8, 2)));
    const std::chrono::hours hours(number(11, 2));
    const std::chrono::minutes minutes(number(14, 2));
    const std::chrono::seconds seconds(number(17, 2));
    if (wrong != 0 || number(0, 4) == 0 || !date.ok() || hours.count() > 23 ||
        minutes.count() > 59 || seconds.count() > 59)
        return std::nullopt;
    return Instant(sys_days(date)) + hours + minutes + seconds +
           std::chrono::milliseconds(number(20, 3));
}

// Puts `number` into the `count` characters at `at`, with leading zeros.
void putDigits(char* at, unsigned number, int count)
{
    for (int i = count - 1; i >= 0; --i, number /= 10)
        at[i] = static_cast<char>('0' + number % 10);
}

std::string isoDate(Instant instant, bool milliseconds)
{
    const auto days = std::chrono::floor<std::chrono::days>(instant);
    const year_month_day date(days);
    const auto ofDay = static_cast<unsigned>(
        std::chrono::floor<std::chrono::milliseconds>(instant - days).count());
    std::string text = "0000-00-00T00:00:00.000Z";
    putDigits(&text[0], static_cast<unsigned>(static_cast<int>(date.year())), 4);
    putDigits(&text[5], static_cast<unsigned>(date.month()), 2);
    putDigits(&text[8], static_cast<unsigned>(date.day()), 2);
    putDigits(&text[11], ofDay / 3'600'000, 2);
    putDigits(&text[14], ofDay / 60'000 % 60, 2);
    putDigits(&text[17], ofDay / 1000 % 60, 2);
    putDigits(&text[20], ofDay % 1000, 3);
    if (!milliseconds)
        text.erase(19, 4);
    return text;
}

long long roundedSeconds(Instant from, Instant to)
{
    return std::llround(secondsBetween(from, to));
}

} // namespace

std::optional<Instant> parseISO8601(std::string_view text)
{
    if (const auto instant = parseOwnForm(text))
        return instant;
    const auto dot = text.find('.');
    if (dot == std::string_view::npos)
        return parseFixed(text, 0);
    const auto digits =
        std::min(text.find_first_not_of("0123456789", dot + 1), text.size()) - dot - 1;
    if (digits == 3 || digits == 6) {
        if (const auto instant = parseFixed(text, static_cast<std::ptrdiff_t>(digits)))
            return instant;
    }
    // Any other fraction: cut it out, from the full stop up to the zone, and read what is left.
    const auto zone = text.find_first_of("+-Z", dot);
    if (zone == std::string_view::npos)
        return std::nullopt;
    return parseFixed(std::string(text.substr(0, dot)).append(text.substr(zone)), 0);
}

std::optional<Instant> parseISO8601WholeSeconds(std::string_view text)
{
    return parseFixed(text, 0);
}

std::string isoFractional(Instant instant)
{
    return isoDate(instant, true);
}

std::string isoWholeSeconds(Instant instant)
{
    return isoDate(instant, false);
}

std::string countdown(Instant to, Instant from)
{
    const long long left = roundedSeconds(from, to);
    if (left < 1)
        return "now";
    if (left < 120)
        return "1m";
    if (left < 3600)
        return fmt::format("{}m", left / 60);
    if (left < 86400)
        return fmt::format("{}h {}m", left / 3600, left % 3600 / 60);
    return fmt::format("{}d {}h", left / 86400, left % 86400 / 3600);
}

std::string relativeAge(Instant of, Instant from)
{
    const long long age = roundedSeconds(of, from);
    if (age < 60)
        return "just now";
    if (age < 3600)
        return fmt::format("{}m ago", age / 60);
    if (age < 86400)
        return fmt::format("{}h ago", age / 3600);
    return fmt::format("{}d ago", age / 86400);
}

std::string wholeText(double value)
{
    return fmt::format("{:.0f}", std::round(value) + 0.0); // + 0.0 makes 0 of -0
}

std::string percentText(double percent)
{
    return wholeText(percent > 0 ? percent : 0.0) + "%";
}

} // namespace vellumor::Format
