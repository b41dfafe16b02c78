#include "ui/model/AccountSectionContent.h"

#include "base/Format.h"
#include "history/Projection.h"
#include "ui/model/AccountNotes.h"
#include "ui/model/ResetTooltip.h"

namespace vellumor {

namespace {

// An active window without a time is about to get one, so nothing is guessed for it.
std::optional<Instant> estimate(const LimitWindow& window, const AnchorsByKind* anchors,
                                Instant now)
{
    if (window.isActive || anchors == nullptr)
        return std::nullopt;
    return estimatedReset(window, *anchors, now);
}

std::string resetText(const LimitWindow& window, std::optional<Instant> estimated, Instant now)
{
    if (window.resetsAt)
        return Format::countdown(*window.resetsAt, now);
    if (window.kind == "session")
        return "not started";
    return estimated ? Format::countdown(*estimated, now) : "";
}

UsageRowContent row(const LimitWindow& window, const AccountSectionInput& input, Instant now)
{
    const auto estimated = estimate(window, input.anchors, now);
    return {LimitWindow::title(window.kind, window.scope),
            window.percent,
            Format::percentText(window.percent),
            resetText(window, estimated, now),
            ResetTooltip::text(window, estimated, now).value_or(""),
            input.isStale};
}

std::string forecastLine(const AccountSectionInput& input, Instant now, const ShortTime& shortTime)
{
    const UsageSamples none;
    const auto projection = Projection::evaluate(
        input.state->usage->windows, input.history != nullptr ? *input.history : none, now);
    if (!projection)
        return {};
    return "↗ " + projection->windowTitle + " " + projection->phrase(now, shortTime);
}

void addReading(AccountSectionContent& content, const AccountSectionInput& input, Instant now,
                const ShortTime& shortTime)
{
    const Usage& usage = *input.state->usage;
    if (usage.windows.empty())
        content.substitute = "No usage data";
    for (const LimitWindow& window : usage.windows)
        content.rows.push_back(row(window, input, now));
    content.forecast = forecastLine(input, now, shortTime);
    if (usage.extraUsage) {
        content.credits = usage.extraUsage->creditsLine().value_or("");
        content.areCreditsExhausted =
            usage.extraUsage->display() == ExtraUsage::CreditDisplay::exhausted;
    }
}

std::optional<NoteContent> noteOf(const AccountUsageState& state, bool isStale)
{
    if (state.revival)
        return NoteContent{RevivalNote::text(*state.revival), false};
    if (const auto text = StatusNote::text(state, isStale))
        return NoteContent{*text, true};
    return std::nullopt;
}

} // namespace

std::string UsageRowContent::spoken() const
{
    return title + " " + percentText + (resetText.empty() ? "" : ", " + resetText);
}

AccountSectionContent accountSectionContent(const AccountSectionInput& input, Instant now,
                                            const ShortTime& shortTime)
{
    AccountSectionContent content;
    content.configDir = input.account.configDir;
    content.name = input.account.displayName;
    content.plan = input.account.plan.value_or("");
    content.historyHelp = "History for " + content.name;
    if (input.state == nullptr)
        return content;
    if (input.state->usage)
        addReading(content, input, now, shortTime);
    else
        content.substitute = StatusNote::reason(*input.state).value_or("");
    content.note = noteOf(*input.state, input.isStale);
    if (content.note && content.note->text == content.substitute)
        content.note.reset(); // once is enough
    content.isWaiting = !input.state->usage && !input.state->lastError && input.state->isLoading;
    return content;
}

} // namespace vellumor
