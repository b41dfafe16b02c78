#pragma once

#include "status/StatusBar.h"
#include "status/StatusReport.h"

#include <string>

// StatusTable: a report for people at a terminal. Pure.
namespace vellumor::StatusTable {

struct Style {
    int width = 80; // columns
    bool hasColours = false;
    StatusBar::Characters characters = StatusBar::Characters::blocks;
};

// Every account with its limits as bars, each line with its end.
[[nodiscard]] std::string text(const StatusReport& report, StatusOrigin origin, Instant now,
                               const Style& style);

// All accounts in one line without its end, for a reader that waits for the next:
// "Work: Session 62%, Weekly 40%; Home: Session 3%".
[[nodiscard]] std::string line(const StatusReport& report);

} // namespace vellumor::StatusTable
