#include "base/Format.h"

#include <fmt/format.h>

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
        : m_rest(text)
    {
    }

    int digits(std::size_t count, int least, int most)
    {
        int number = 0;
        for (std::size_t i = 0; i < count; ++i) {
            if (i >= m_rest.size() || !isDigit(m_rest[i]))
                return fail();
            number = number * 10 + (m_rest[i] - '0');
        }
        m_rest.remove_prefix(count);
        return number >= least && number <= most ? number : fail();
    }

    void literal(char expected)
    {
        if (!take(expected))
            fail();
    }

    bool take(char c)
    {
        if (m_rest.empty() || m_rest.front() != c)
            return false;
        m_rest.remove_prefix(1);
        return true;
    }

    [[nodiscard]] std::string_view rest() const { return m_rest; }
    [[nodiscard]] bool finished() const { return m_good && m_rest.empty(); }
    [[nodiscard]] bool good() const { return m_good; }

private:
    int fail()
    {
        m_good = false;
        return 0;
    }

    std::string_view m_rest;
    bool m_good = true;
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
std::optional<Instant> parseFixed(std::string_view text, std::size_t fractionDigits)
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
    const Instant instant = Instant(sys_days(date)) + hours + minutes + seconds + fraction - offset;
    // An offset may carry the moment into a year that could not be written and read again.
    const int utcYear =
        static_cast<int>(year_month_day(std::chrono::floor<std::chrono::days>(instant)).year());
    if (utcYear < 1 || utcYear > 9999)
        return std::nullopt;
    return instant;
}

std::string isoDate(Instant instant, bool milliseconds)
{
    const auto days = std::chrono::floor<std::chrono::days>(instant);
    const year_month_day date(days);
    const std::chrono::hh_mm_ss time(std::chrono::floor<std::chrono::milliseconds>(instant - days));
    std::string text =
        fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}", static_cast<int>(date.year()),
                    static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                    time.hours().count(), time.minutes().count(), time.seconds().count());
    if (milliseconds)
        text += fmt::format(".{:03}", time.subseconds().count());
    return text + "Z";
}

long long roundedSeconds(Instant from, Instant to)
{
    return std::llround(secondsBetween(from, to));
}

} // namespace

std::optional<Instant> parseISO8601(std::string_view text)
{
    for (const std::size_t digits : {6U, 3U, 0U}) {
        if (const auto instant = parseFixed(text, digits))
            return instant;
    }
    // Any other fraction: cut it out, from the full stop up to the zone, and read what is left.
    const auto dot = text.find('.');
    if (dot == std::string_view::npos)
        return std::nullopt;
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

std::string percentText(double percent)
{
    return fmt::format("{:.0f}%", percent > 0 ? std::round(percent) : 0.0);
}

} // namespace vellumor::Format
