#include "cli/Printer.h"

#include "cli/TerminalStyle.h"
#include "status/StatusFields.h"
#include "status/StatusJson.h"
#include "status/StatusTable.h"
#include "status/StatusWaybar.h"

#include <langinfo.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string_view>

namespace vellumor {

namespace {

// 0: standard output is no terminal, or one that has not said.
int columnsOfTerminal()
{
    winsize size{};
    return ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

StatusBar::Characters charactersOfLocale()
{
    const bool isUtf8 = std::strcmp(::nl_langinfo(CODESET), "UTF-8") == 0;
    return isUtf8 ? StatusBar::Characters::blocks : StatusBar::Characters::ascii;
}

} // namespace

Printer::Printer(CommandLine::Status wanted, const Environment& environment)
    : m_wanted(std::move(wanted))
    , m_hasColours(TerminalStyle::hasColours(environment, ::isatty(STDOUT_FILENO) == 1))
    , m_width(TerminalStyle::width(environment, columnsOfTerminal()))
{
}

std::string Printer::table(const StatusReport& report, StatusOrigin origin, Instant now) const
{
    if (m_wanted.isWatching)
        return StatusTable::line(report) + "\n";
    return StatusTable::text(report, origin, now, {m_width, m_hasColours, charactersOfLocale()});
}

std::string Printer::textOf(const StatusReport& report, StatusOrigin origin, Instant now) const
{
    const auto layout = m_wanted.isWatching ? JsonLayout::compact : JsonLayout::pretty;
    switch (m_wanted.form) {
    case CommandLine::Form::json:
        return StatusJson::text(report, origin, now, layout) + "\n";
    case CommandLine::Form::waybar:
        return StatusWaybar::line(report, origin, now) + "\n";
    case CommandLine::Form::fields:
        return StatusFields::text(report, m_wanted.format, m_wanted.separator, now) + "\n";
    case CommandLine::Form::table:
        break;
    }
    return table(report, origin, now);
}

bool Printer::write(const std::string& text)
{
    std::string_view rest = text;
    while (!rest.empty()) {
        const ssize_t written = ::write(STDOUT_FILENO, rest.data(), rest.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        rest.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

} // namespace vellumor
