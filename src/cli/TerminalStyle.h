#pragma once

#include "base/Environment.h"

// TerminalStyle: how a table may look where it is written to. Pure.
namespace vellumor::TerminalStyle {

// Only on a terminal, and neither where NO_COLOR is set and not empty (no-color.org) nor where the
// terminal knows none.
[[nodiscard]] bool hasColours(const Environment& environment, bool isTerminal);

// Columns: those of the terminal (0: it has not said), else what COLUMNS says, else 80.
[[nodiscard]] int width(const Environment& environment, int columnsOfTerminal);

} // namespace vellumor::TerminalStyle
