#pragma once

#include "base/Environment.h"
#include "cli/CommandLine.h"
#include "status/StatusReport.h"

#include <string>

namespace vellumor {

// Writes reports to standard output in the form that was asked for.
class Printer {
public:
    Printer(CommandLine::Status wanted, const Environment& environment);

    // The text of a report, with its last line end. With --watch it is one line.
    [[nodiscard]] std::string textOf(const StatusReport& report, StatusOrigin origin,
                                     Instant now) const;

    // False when nobody takes it any more.
    [[nodiscard]] static bool write(const std::string& text);

private:
    [[nodiscard]] std::string table(const StatusReport& report, StatusOrigin origin,
                                    Instant now) const;

    CommandLine::Status m_wanted;
    bool m_hasColours;
    int m_width; // columns
};

} // namespace vellumor
