#include "ui/model/PopoverContent.h"

#include "app/state/AccountList.h"
#include "app/state/NewAccountNotice.h"
#include "app/state/Stagger.h"
#include "base/Format.h"

namespace vellumor {

namespace {

template <typename Map>
const typename Map::mapped_type* find(const Map& map, const std::string& key)
{
    const auto found = map.find(key);
    return found == map.end() ? nullptr : &found->second;
}

AccountSectionContent section(const AppState& state, const Account& account, Instant now,
                              const ShortTime& shortTime)
{
    const AppState::History* history = find(state.historyByDir(), account.configDir);
    const AccountSectionInput input{
        account, state.state(account.id), history != nullptr ? history->get() : nullptr,
        find(state.resetAnchorsByDir(), account.configDir), state.isStale(account.id, now)};
    return accountSectionContent(input, now, shortTime);
}

} // namespace

PopoverContent PopoverContent::of(const AppState& state, Instant now, const ShortTime& shortTime)
{
    PopoverContent content;
    content.notice = NewAccountNotice::text(state.newAccountNames()).value_or("");
    for (const Account& account : AccountList::orderedTracked(state.accounts()))
        content.sections.push_back(section(state, account, now, shortTime));
    if (content.sections.empty()) {
        content.hint = "Run Claude Code to sign in, then scan for accounts.";
        content.hintLink = "How to sign in to Claude Code";
    }
    content.footer =
        footerText(state.dataUpdatedAt(), now, state.effectiveInterval(), state.userInterval());
    return content;
}

std::string PopoverContent::footerText(std::optional<Instant> dataUpdatedAt, Instant now,
                                       double effectiveInterval, double userInterval)
{
    if (!dataUpdatedAt)
        return "Updating";
    std::string text = "Updated " + Format::relativeAge(*dataUpdatedAt, now);
    if (const auto note = Stagger::cadenceNote(effectiveInterval, userInterval))
        text += " · " + *note;
    return text;
}

} // namespace vellumor
