#include "ui/model/settings/NotificationsContent.h"

#include "app/state/AccountList.h"

#include <algorithm>

namespace vellumor {

std::vector<int> SessionClosingChoice::options(int storedMinutes)
{
    std::vector<int> minutes(presets.begin(), presets.end());
    if (std::find(minutes.begin(), minutes.end(), storedMinutes) == minutes.end())
        minutes.push_back(storedMinutes);
    std::sort(minutes.begin(), minutes.end());
    return minutes;
}

std::string SessionClosingChoice::text(int minutes)
{
    return std::to_string(minutes) + " min";
}

NotificationsContent NotificationsContent::of(const AppState& state)
{
    NotificationsContent content;
    content.preferences = state.preferences();
    content.leads = SessionClosingChoice::options(content.preferences.sessionClosingLeadMinutes);
    for (const Account& account : AccountList::orderedTracked(state.accounts())) {
        content.custom.push_back(
            {account.id, account.displayName, content.preferences.customThreshold(account.id)});
    }
    return content;
}

} // namespace vellumor
