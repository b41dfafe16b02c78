#pragma once

#include "base/Environment.h"
#include "cli/BusClient.h"
#include "cli/CommandLine.h"
#include "cli/Printer.h"
#include "store/Folders.h"

namespace vellumor {

// What `vellumor status` does.
class StatusCommand {
public:
    // As docs/status.md tells.
    enum ExitStatus { printed = 0, failed = 1, wrongArguments = 2, noAccount = 3 };

    StatusCommand(CommandLine::Status wanted, const Environment& environment);

    // Gives the exit status.
    [[nodiscard]] int run();

private:
    struct Told {
        StatusReport report;
        StatusOrigin origin = StatusOrigin::program;
    };

    // From the program where it runs, else from the files; only the account that was asked for.
    [[nodiscard]] Told tell() const;
    [[nodiscard]] std::string text(const Told& told) const;
    [[nodiscard]] int watch();

    CommandLine::Status m_wanted;
    Folders m_folders;
    BusClient m_bus;
    Printer m_printer;
};

} // namespace vellumor
