#include "status/StatusWaybar.h"

#include "base/Format.h"
#include "base/Json.h"
#include "base/Text.h"
#include "usage/model/UsageLevel.h"

#include <algorithm>
#include <cmath>
#include <set>

namespace vellumor::StatusWaybar {

namespace {

// Fit for one line of Pango markup.
std::string escaped(const std::string& text)
{
    std::string safe;
    for (const char c : Text::printable(text)) {
        switch (c) {
        case '&':
            safe += "&amp;";
            break;
        case '<':
            safe += "&lt;";
            break;
        case '>':
            safe += "&gt;";
            break;
        case '"':
            safe += "&quot;";
            break;
        case '\'':
            safe += "&#39;";
            break;
        default:
            safe += c;
        }
    }
    return safe;
}

std::string joined(const std::vector<std::string>& parts, const char* between)
{
    std::string text;
    for (const std::string& part : parts)
        text.append(text.empty() ? "" : between).append(part);
    return text;
}

std::string shortText(const StatusAccount& account)
{
    const StatusWindow* fullest = account.fullest();
    return escaped(account.name) + " " + (fullest == nullptr ? "–" : escaped(fullest->percentText));
}

std::string tooltipOf(const StatusAccount& account, Instant now)
{
    std::vector<std::string> lines = {escaped(account.name)};
    if (account.updatedAt)
        lines[0] += " · " + Format::relativeAge(*account.updatedAt, now);
    for (const StatusWindow& window : account.windows) {
        std::string line = escaped(window.title) + ": " + escaped(window.percentText);
        if (!window.resetText.empty())
            line += " · " + escaped(window.resetText);
        lines.push_back(std::move(line));
    }
    for (const std::string& text : {account.forecast, account.credits}) {
        if (!text.empty())
            lines.push_back(escaped(text));
    }
    for (const std::string& note : account.notes)
        lines.push_back(escaped(note));
    return joined(lines, "\n");
}

double fullestOf(const StatusReport& report)
{
    double percent = 0;
    for (const StatusAccount& account : report.accounts) {
        if (const StatusWindow* window = account.fullest())
            percent = std::max(percent, window->percent);
    }
    return percent;
}

Json classesOf(const StatusReport& report, StatusOrigin origin)
{
    Json classes = Json::array();
    classes.push_back(report.accounts.empty() ? "none" : word(usageLevel(fullestOf(report))));
    std::set<std::string> states;
    for (const StatusAccount& account : report.accounts)
        states.insert(account.state);
    states.erase("ok");
    for (const std::string& state : states)
        classes.push_back(Text::printable(state));
    if (origin == StatusOrigin::files)
        classes.push_back("files");
    return classes;
}

} // namespace

std::string line(const StatusReport& report, StatusOrigin origin, Instant now)
{
    std::vector<std::string> texts;
    std::vector<std::string> tooltips;
    for (const StatusAccount& account : report.accounts) {
        texts.push_back(shortText(account));
        tooltips.push_back(tooltipOf(account, now));
    }
    Json json = {{"text", joined(texts, "  ")},
                 {"tooltip", joined(tooltips, "\n\n")},
                 {"class", classesOf(report, origin)},
                 {"percentage", std::lround(std::clamp(fullestOf(report), 0.0, 100.0))}};
    return writeJson(std::move(json), JsonLayout::compact, JsonSlashes::plain).value_or("{}");
}

} // namespace vellumor::StatusWaybar
