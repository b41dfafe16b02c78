#include "status/sources/StatusInput.h"

#include "app/state/AccountList.h"
#include "ui/model/AccountRender.h"

namespace vellumor {

namespace {

std::string wordOf(AccountRenderState state)
{
    switch (state) {
    case AccountRenderState::ok:
        return "ok";
    case AccountRenderState::stale:
        return "stale";
    case AccountRenderState::loading:
        return "loading";
    case AccountRenderState::noData:
        return "noData";
    case AccountRenderState::noToken:
        return "noToken";
    case AccountRenderState::expired:
        return "expired";
    case AccountRenderState::blocked:
        break;
    }
    return "blocked";
}

StatusWindow windowOf(const LimitWindow& window, const UsageRowContent& row)
{
    return {window.kind,     row.title,     row.percent,     row.percentText,
            window.resetsAt, row.resetText, window.isActive, window.scope.value_or(""),
            row.isStale};
}

std::vector<std::string> notesOf(const AccountSectionContent& content)
{
    std::vector<std::string> notes;
    if (!content.substitute.empty())
        notes.push_back(content.substitute);
    if (content.note)
        notes.push_back(content.note->text);
    return notes;
}

} // namespace

const AccountUsageState* StatusInput::state(const std::string& id) const
{
    const auto found = states.find(id);
    return found == states.end() ? nullptr : &found->second;
}

StatusAccount StatusInput::accountOf(const Account& account, Instant now,
                                     const ShortTime& shortTime) const
{
    const AccountUsageState* known = state(account.id);
    const auto history = histories.find(account.configDir);
    const auto anchor = anchors.find(account.configDir);
    const AccountSectionInput input{account, known,
                                    history == histories.end() ? nullptr : history->second.get(),
                                    anchor == anchors.end() ? nullptr : &anchor->second,
                                    known != nullptr && known->isStale(effectiveInterval, now)};
    const auto content = accountSectionContent(input, now, shortTime);
    StatusAccount told;
    told.id = account.id;
    told.name = content.name;
    told.state = wordOf(AccountRender::of(account, known, effectiveInterval, now).state);
    for (std::size_t i = 0; i < content.rows.size(); ++i)
        told.windows.push_back(windowOf(known->usage->windows[i], content.rows[i]));
    told.credits = content.credits;
    told.areCreditsExhausted = content.areCreditsExhausted;
    told.forecast = content.forecast;
    if (known != nullptr && known->usage)
        told.updatedAt = known->usage->fetchedAt;
    told.notes = notesOf(content);
    return told;
}

StatusReport StatusInput::report(Instant now, const ShortTime& shortTime) const
{
    StatusReport report;
    std::vector<AccountUsageState> shown;
    for (const Account& account : AccountList::orderedTracked(accounts)) {
        report.accounts.push_back(accountOf(account, now, shortTime));
        if (const AccountUsageState* known = state(account.id))
            shown.push_back(*known);
    }
    report.updatedAt = DataAge::oldest(shown);
    return report;
}

std::optional<Instant> StatusInput::nextStaleChange(Instant now) const
{
    std::optional<Instant> next;
    for (const Account& account : AccountList::orderedTracked(accounts)) {
        const AccountUsageState* known = state(account.id);
        const auto change =
            known == nullptr ? std::nullopt : known->nextStaleChange(effectiveInterval, now);
        if (change && (!next || *change < *next))
            next = change;
    }
    return next;
}

} // namespace vellumor
