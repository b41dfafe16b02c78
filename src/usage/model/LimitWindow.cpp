#include "usage/model/LimitWindow.h"

#include "base/Text.h"

namespace vellumor {

namespace {

constexpr std::string_view weeklyPrefix = "seven_day_";

// "max_tier-x" becomes "Max tier x".
std::string sentenceCased(std::string_view kind)
{
    std::string words;
    bool pending = false;
    for (const char c : kind) {
        if (c == '_' || c == '-' || c == ' ') {
            pending = !words.empty();
            continue;
        }
        if (pending)
            words += ' ';
        pending = false;
        words += c;
    }
    return words.empty() ? "Unknown" : Text::withUpperFirst(words);
}

} // namespace

std::string LimitWindow::title(std::string_view kind, const std::optional<std::string>& scope)
{
    const bool scoped = scope && !scope->empty();
    if (kind == "session")
        return "Session";
    if (kind == "weekly_all")
        return "Weekly";
    if (kind == "weekly_scoped")
        return "Weekly (" + (scoped ? *scope : "scoped") + ")";
    if (kind == "seven_day_oauth_apps")
        return "Weekly (apps)";
    if (kind == "seven_day_cowork")
        return "Weekly (cowork)";
    if (kind.starts_with(weeklyPrefix) && kind.size() > weeklyPrefix.size())
        return "Weekly (" + sentenceCased(kind.substr(weeklyPrefix.size())) + ")";
    return sentenceCased(kind) + (scoped ? " (" + *scope + ")" : "");
}

} // namespace vellumor
