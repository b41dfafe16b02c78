#include "cli/StatusCommand.h"

#include "base/SystemClock.h"
#include "base/Text.h"
#include "cli/LocaleTime.h"
#include "cli/Watcher.h"
#include "status/sources/StatusFiles.h"

#include <cstdio>

namespace vellumor {

namespace {

void complain(const std::string& text)
{
    std::fputs(("vellumor: " + text + "\n").c_str(), stderr);
}

} // namespace

StatusCommand::StatusCommand(CommandLine::Status wanted, const Environment& environment)
    : m_wanted(std::move(wanted))
    , m_folders(Folders::fromEnvironment(environment))
    , m_bus(environment)
    , m_printer(m_wanted, environment)
{
}

StatusCommand::Told StatusCommand::tell() const
{
    Told told;
    if (auto report = m_bus.report()) {
        told.report = *std::move(report);
    } else {
        told.report = StatusFiles::report(m_folders, systemNow(), LocaleTime::shortText);
        told.origin = StatusOrigin::files;
    }
    if (m_wanted.account)
        told.report = told.report.only(*m_wanted.account);
    return told;
}

std::string StatusCommand::text(const Told& told) const
{
    return m_printer.textOf(told.report, told.origin, systemNow());
}

int StatusCommand::run()
{
    if (m_wanted.isWatching)
        return watch();
    const Told told = tell();
    const bool isMissing = told.report.accounts.empty();
    if (isMissing && m_wanted.account) {
        complain("there is no account “" + Text::printable(*m_wanted.account) +
                 "”: `vellumor status` lists them");
        if (m_wanted.form == CommandLine::Form::table)
            return noAccount;
    }
    if (!Printer::write(text(told)))
        return failed;
    return isMissing ? noAccount : printed;
}

// An account may come later, so that one that is not there is no reason to end.
int StatusCommand::watch()
{
    std::string last;
    const auto print = [&] {
        const std::string next = text(tell());
        if (next == last)
            return true;
        last = next;
        return Printer::write(next);
    };
    if (!print())
        return failed;
    if (m_bus.connection() == nullptr) {
        complain("there is no session bus by which to hear of changes");
        return failed;
    }
    Watcher watcher(m_bus.connection(), print);
    watcher.run();
    return failed; // the reader has gone, or the bus
}

} // namespace vellumor
