#include "status/StatusReport.h"

#include <algorithm>

namespace vellumor {

const StatusWindow* StatusAccount::fullest() const
{
    const auto found = std::max_element(
        windows.begin(), windows.end(),
        [](const StatusWindow& a, const StatusWindow& b) { return a.percent < b.percent; });
    return found == windows.end() ? nullptr : &*found;
}

const StatusWindow* StatusAccount::window(std::string_view kind) const
{
    const auto found = std::find_if(windows.begin(), windows.end(),
                                    [&](const StatusWindow& each) { return each.kind == kind; });
    return found == windows.end() ? nullptr : &*found;
}

StatusReport StatusReport::timeless() const
{
    StatusReport report = *this;
    for (StatusAccount& account : report.accounts) {
        for (StatusWindow& window : account.windows) {
            if (!window.resetText.empty())
                window.resetText = "later"; // that there is one may be news
        }
    }
    return report;
}

StatusReport StatusReport::only(std::string_view nameOrId) const
{
    StatusReport report = *this;
    std::erase_if(report.accounts, [&](const StatusAccount& account) {
        return account.name != nameOrId && account.id != nameOrId;
    });
    return report;
}

} // namespace vellumor
