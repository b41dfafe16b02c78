// The weeks that have ended, and what is kept of them.

#include "app/state/AccountList.h"
#include "app/state/AppState.h"

namespace vellumor {

// Appends what is due, and publishes what the files hold then. A round in which no week has ended
// reads nothing.
Task<> AppState::archiveDueReceipts(Instant now)
{
    std::map<std::string, WeeklyReceipts> due; // by config directory
    for (const Account& account : AccountList::orderedTracked(m_accounts)) {
        auto receipts = dueReceipts(account.configDir, now);
        if (!receipts.empty())
            due.emplace(account.configDir, std::move(receipts));
    }
    if (due.empty())
        co_return;
    auto append = [due = std::move(due), now](ReceiptStore& store) {
        for (const auto& [configDir, receipts] : due) {
            for (const WeeklyReceipt& receipt : receipts)
                store.append(receipt, configDir, now);
        }
    };
    co_await m_parts.stores.receipts(std::move(append));
    co_await reloadReceipts();
}

WeeklyReceipts AppState::dueReceipts(const std::string& configDir, Instant now) const
{
    const auto anchors = m_resetAnchorsByDir.find(configDir);
    const auto history = m_historyByDir.find(configDir);
    if (anchors == m_resetAnchorsByDir.end() || anchors->second.empty() ||
        history == m_historyByDir.end() || history->second->empty())
        return {};
    const auto found = m_receiptsByDir.find(configDir);
    const WeeklyReceipts archived =
        found != m_receiptsByDir.end() ? found->second : WeeklyReceipts();
    std::optional<Instant> lastArchivedEnd;
    if (!archived.empty())
        lastArchivedEnd = archived.back().weekEnd;
    WeeklyReceipts due;
    for (const TimeSpan& week :
         WeeklyReceipt::completedWeeks(anchors->second, lastArchivedEnd, *history->second, now)) {
        if (ReceiptStore::hasWeek(archived, week.end))
            continue; // by a sibling whose week ends some seconds earlier
        if (auto receipt = WeeklyReceipt::assemble(*history->second, week, now))
            due.push_back(*std::move(receipt));
    }
    return due;
}

Task<> AppState::reloadReceipts()
{
    auto load = [dirs = AccountList::configDirs(m_accounts)](ReceiptStore& store) {
        std::map<std::string, WeeklyReceipts> loaded;
        for (const std::string& dir : dirs)
            loaded[dir] = store.load(dir);
        return loaded;
    };
    auto receipts = co_await m_parts.stores.receipts(std::move(load));
    m_receiptsByDir = std::move(receipts);
    m_notice.announce();
}

} // namespace vellumor
