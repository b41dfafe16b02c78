#include "platform/linux/AutostartEntry.h"

#include "base/Text.h"

#include <algorithm>
#include <array>
#include <vector>

namespace vellumor::AutostartEntry {

namespace {

constexpr std::string_view groupHead = "[Desktop Entry]";
constexpr std::string_view fresh = "[Desktop Entry]\n"
                                   "Type=Application\n"
                                   "Version=1.0\n"
                                   "Name=Vellumor\n"
                                   "Comment=Shows the usage limits of Claude Code accounts in the "
                                   "panel\n"
                                   "Icon=dev.quorle.vellumor\n"
                                   "Terminal=false\n"
                                   "StartupNotify=false\n";
// Those of `fresh`, and those that come and go with the switch.
constexpr std::array<std::string_view, 11> ownKeys = {"Type",
                                                      "Version",
                                                      "Name",
                                                      "Comment",
                                                      "Icon",
                                                      "Terminal",
                                                      "StartupNotify",
                                                      "Exec",
                                                      "TryExec",
                                                      "Hidden",
                                                      "X-GNOME-Autostart-enabled"};

struct Line {
    std::string text;
    std::string key;          // empty for one that is no assignment
    std::string value;        // without white space around it
    bool isInEntry = false;   // of the group that counts; its head is not
    bool isEntryHead = false; // the head of that group
};

Line read(std::string_view text, bool isInEntry)
{
    Line line;
    line.text = text;
    const std::string_view trimmed = Text::trimmed(text);
    line.isEntryHead = trimmed == groupHead;
    line.isInEntry = line.isEntryHead ? false : isInEntry && !trimmed.starts_with('[');
    const auto equals = trimmed.find('=');
    if (equals == std::string_view::npos || trimmed.starts_with('#') || trimmed.starts_with('['))
        return line;
    line.key = Text::trimmed(trimmed.substr(0, equals));
    line.value = Text::trimmed(trimmed.substr(equals + 1));
    return line;
}

using Lines = std::vector<Line>;

Lines linesOf(std::string_view text)
{
    Lines lines;
    while (!text.empty()) {
        const auto end = std::min(text.find('\n'), text.size());
        const bool isInEntry =
            !lines.empty() && (lines.back().isInEntry || lines.back().isEntryHead);
        lines.push_back(read(text.substr(0, end), isInEntry));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return lines;
}

std::string textOf(const Lines& lines)
{
    std::string text;
    for (const Line& line : lines)
        text.append(line.text).append("\n");
    return text;
}

bool isEntry(const Lines& lines)
{
    return std::any_of(lines.begin(), lines.end(), [](const Line& l) { return l.isEntryHead; });
}

std::string_view valueOf(const Lines& lines, std::string_view key)
{
    const auto found = std::find_if(lines.rbegin(), lines.rend(), [key](const Line& line) {
        return line.isInEntry && line.key == key;
    });
    return found == lines.rend() ? std::string_view() : std::string_view(found->value);
}

void drop(Lines& lines, std::string_view key)
{
    std::erase_if(lines, [key](const Line& line) { return line.isInEntry && line.key == key; });
}

// In the place of the first that is there, else at the top of the group.
void set(Lines& lines, std::string_view key, std::string_view value)
{
    const auto head =
        std::find_if(lines.begin(), lines.end(), [](const Line& l) { return l.isEntryHead; });
    const auto old = std::find_if(lines.begin(), lines.end(), [key](const Line& line) {
        return line.isInEntry && line.key == key;
    });
    const auto place = (old == lines.end() ? head + 1 : old) - lines.begin();
    drop(lines, key);
    lines.insert(lines.begin() + place, read(std::string(key).append("=").append(value), true));
}

// The escapes of every text in a desktop entry.
std::string escaped(std::string_view value)
{
    std::string text;
    for (const char c : value) {
        switch (c) {
        case '\\':
            text += "\\\\";
            break;
        case '\n':
            text += "\\n";
            break;
        case '\t':
            text += "\\t";
            break;
        case '\r':
            text += "\\r";
            break;
        default:
            text += c;
        }
    }
    // A blank at the start would be taken for one beside the equals sign.
    return text.starts_with(' ') ? "\\s" + text.substr(1) : text;
}

bool isPlain(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           std::string_view("/._-+:@,").find(c) != std::string_view::npos;
}

// One argument of a command line, as Exec has it.
std::string quoted(std::string_view argument)
{
    if (std::all_of(argument.begin(), argument.end(), isPlain))
        return std::string(argument);
    std::string text = "\"";
    for (const char c : argument) {
        if (c == '"' || c == '`' || c == '$' || c == '\\')
            text += '\\';
        else if (c == '%')
            text += '%';
        text += c;
    }
    return text + '"';
}

bool isTrue(std::string_view value)
{
    return value == "true" || value == "1";
}

bool isFalse(std::string_view value)
{
    return value == "false" || value == "0";
}

// Somebody else's: another group, a key of another name or language, a remark.
bool isForeign(const Line& line)
{
    if (line.isEntryHead || Text::trimmed(line.text).empty())
        return false;
    return !line.isInEntry || std::find(ownKeys.begin(), ownKeys.end(), line.key) == ownKeys.end();
}

} // namespace

bool isOn(std::string_view text)
{
    const Lines lines = linesOf(text);
    return !isTrue(valueOf(lines, "Hidden")) &&
           !isFalse(valueOf(lines, "X-GNOME-Autostart-enabled"));
}

std::string exec(std::string_view program)
{
    // The program of a command line may hold no equals sign, and GLib looks for one with a percent
    // sign under its doubled name: then a shell, whose name is plain, makes itself into it.
    const bool isPlainProgram = program.find_first_of("=%") == std::string_view::npos;
    const std::string shell = "/bin/sh -c " + quoted(R"(exec "$0")") + " ";
    return escaped((isPlainProgram ? "" : shell) + quoted(program));
}

std::string switchedOn(std::string_view text, std::string_view program)
{
    Lines lines = linesOf(text);
    if (!isEntry(lines) || !Text::isValidUtf8(text))
        lines = linesOf(fresh);
    if (valueOf(lines, "Name").empty())
        set(lines, "Name", "Vellumor");
    set(lines, "Type", "Application");
    // Where the program is gone, a desktop passes over the entry without a word.
    set(lines, "TryExec", escaped(program));
    set(lines, "Exec", exec(program));
    drop(lines, "Hidden");
    drop(lines, "X-GNOME-Autostart-enabled");
    return textOf(lines);
}

std::optional<std::string> switchedOff(std::string_view text)
{
    Lines lines = linesOf(text);
    if (!isEntry(lines) || std::none_of(lines.begin(), lines.end(), isForeign))
        return std::nullopt;
    set(lines, "Hidden", "true");
    return textOf(lines);
}

} // namespace vellumor::AutostartEntry
