#include "status/StatusTable.h"

#include "base/Format.h"
#include "base/Text.h"
#include "usage/model/UsageLevel.h"

#include <algorithm>

namespace vellumor::StatusTable {

namespace {

constexpr int longestTitle = 24;  // columns
constexpr int widestBar = 32;     // columns
constexpr int narrowestBar = 4;   // columns; a terminal with less room has none
constexpr int leastReset = 12;    // columns: "not started"
constexpr int percentColumns = 6; // blank, "100%", and what is beyond it

constexpr const char* bold = "\033[1m";
constexpr const char* dim = "\033[2m";
constexpr const char* plain = "\033[0m";

const char* colour(UsageLevel level)
{
    switch (level) {
    case UsageLevel::full:
        return "\033[31m"; // red
    case UsageLevel::high:
        return "\033[33m"; // yellow
    case UsageLevel::calm:
        break;
    }
    return "\033[32m"; // green
}

std::string styled(const std::string& text, const char* escape, const Style& style)
{
    return style.hasColours && !text.empty() ? escape + text + plain : text;
}

std::string padded(std::string text, int columns)
{
    const auto missing = columns - static_cast<int>(Text::columns(text));
    return text.append(static_cast<std::size_t>(std::max(missing, 0)), ' ');
}

struct Columns {
    int title = 0;
    int bar = 0; // 0: no room for one
};

Columns columnsOf(const StatusReport& report, const Style& style)
{
    Columns columns;
    for (const StatusAccount& account : report.accounts) {
        for (const StatusWindow& window : account.windows) {
            const auto width = static_cast<int>(Text::columns(Text::printable(window.title)));
            columns.title = std::max(columns.title, std::min(width, longestTitle));
        }
    }
    const int left = style.width - (2 + columns.title + 2 + percentColumns + 2 + leastReset);
    columns.bar = left < narrowestBar ? 0 : std::min(left, widestBar);
    return columns;
}

std::string rowOf(const StatusWindow& window, const Columns& columns, const Style& style)
{
    const auto title =
        Text::withinColumns(Text::printable(window.title), static_cast<std::size_t>(longestTitle));
    std::string row = "  " + padded(title, columns.title) + "  ";
    const char* const escape = window.isStale ? dim : colour(usageLevel(window.percent));
    if (columns.bar > 0)
        row +=
            styled(StatusBar::text(window.percent, columns.bar, style.characters), escape, style);
    const std::string percent = Text::printable(window.percentText);
    const auto blanks = percentColumns - static_cast<int>(Text::columns(percent));
    row.append(static_cast<std::size_t>(std::max(blanks, 1)), ' ');
    row += percent;
    if (!window.resetText.empty())
        row += "  " + styled(Text::printable(window.resetText), dim, style);
    return row + "\n";
}

std::string sectionOf(const StatusAccount& account, Instant now, const Columns& columns,
                      const Style& style)
{
    std::string text = styled(Text::printable(account.name), bold, style);
    if (account.updatedAt)
        text += "  " + styled(Format::relativeAge(*account.updatedAt, now), dim, style);
    text += "\n";
    for (const StatusWindow& window : account.windows)
        text += rowOf(window, columns, style);
    for (const std::string& words : {account.forecast, account.credits}) {
        if (!words.empty())
            text += "  " + Text::printable(words) + "\n";
    }
    for (const std::string& note : account.notes)
        text += "  " + styled(Text::printable(note), "\033[33m", style) + "\n";
    if (account.windows.empty() && account.notes.empty())
        text += "  " + styled("No reading yet", dim, style) + "\n";
    return text;
}

} // namespace

std::string text(const StatusReport& report, StatusOrigin origin, Instant now, const Style& style)
{
    const Columns columns = columnsOf(report, style);
    std::string text;
    for (const StatusAccount& account : report.accounts)
        text += (text.empty() ? "" : "\n") + sectionOf(account, now, columns, style);
    if (report.accounts.empty())
        text += "No accounts are watched yet.\n";
    if (origin == StatusOrigin::files)
        text += "\n" +
                styled("Vellumor does not answer: these are its last readings.", dim, style) + "\n";
    return text;
}

std::string line(const StatusReport& report)
{
    std::string line;
    for (const StatusAccount& account : report.accounts) {
        std::string words;
        for (const StatusWindow& window : account.windows)
            words += (words.empty() ? "" : ", ") + window.title + " " + window.percentText;
        if (words.empty() || account.state != "ok")
            words += (words.empty() ? "" : ", ") + account.state;
        for (const std::string& note : account.notes)
            words += " (" + note + ")";
        line += (line.empty() ? "" : "; ") + account.name + ": " + words;
    }
    return Text::printable(line);
}

} // namespace vellumor::StatusTable
