#include "cli/TerminalStyle.h"

#include <charconv>

namespace vellumor::TerminalStyle {

namespace {

constexpr int usualWidth = 80;
constexpr int widestSensible = 1000;

} // namespace

bool hasColours(const Environment& environment, bool isTerminal)
{
    return isTerminal && value(environment, "NO_COLOR").value_or("").empty() &&
           value(environment, "TERM").value_or("") != "dumb";
}

int width(const Environment& environment, int columnsOfTerminal)
{
    if (columnsOfTerminal > 0)
        return columnsOfTerminal;
    const std::string told = value(environment, "COLUMNS").value_or("");
    int columns = 0;
    const auto read = std::from_chars(told.data(), told.data() + told.size(), columns);
    const bool isSensible = read.ec == std::errc() && columns > 0 && columns <= widestSensible;
    return isSensible ? columns : usualWidth;
}

} // namespace vellumor::TerminalStyle
