// What the user does.

#include "app/state/AccountList.h"
#include "app/state/AppState.h"
#include "base/Text.h"

namespace vellumor {

void AppState::setTracked(const std::string& id, bool tracked)
{
    m_parts.store.setTracked(id, tracked);
    rederive();
}

void AppState::setPinned(const std::string& id, bool pinned)
{
    m_parts.store.setPinned(id, pinned);
    rederive();
}

void AppState::rename(const Account& account, const std::string& name)
{
    const std::string trimmed(Text::trimmed(name));
    if (trimmed.empty() || trimmed == account.displayName)
        return;
    m_parts.store.rename(account.id, trimmed);
    rederive();
}

void AppState::reorder(const std::vector<std::size_t>& fromOffsets, std::size_t toOffset)
{
    const auto moved = AccountList::moved(AccountList::ordered(m_accounts), fromOffsets, toOffset);
    m_parts.store.reorder(AccountList::ids(moved));
    rederive();
}

void AppState::remove(const Account& account)
{
    m_parts.store.remove(account.id, account.email, account.org);
    rederive();
}

Task<> AppState::restore(std::string configDir)
{
    m_parts.store.restore(configDir);
    co_await rescan();
}

Task<> AppState::upsertManual(std::string configDir, std::optional<std::string> serviceOverride)
{
    m_parts.store.upsertManual(configDir, serviceOverride);
    co_await rescan();
}

Task<> AppState::setServiceOverride(std::string id, std::optional<std::string> service)
{
    m_parts.store.setServiceOverride(id, service);
    co_await rescan();
}

Task<FolderState> AppState::examineFolder(std::string typed)
{
    co_return co_await m_parts.examineFolder(std::move(typed));
}

void AppState::dismissNewAccounts()
{
    m_newAccountNames.clear();
    m_notice.announce();
}

void AppState::setMenuBarMode(MenuBarMode mode)
{
    if (mode != m_menuBarMode)
        updatePreferences([&](Preferences& preferences) { preferences.menuBarMode = mode; });
}

void AppState::setUserInterval(double seconds)
{
    updatePreferences([&](Preferences& preferences) { preferences.userInterval = seconds; });
}

void AppState::updatePreferences(const std::function<void(Preferences&)>& change)
{
    Preferences changed = preferences();
    change(changed);
    const Preferences kept = m_parts.preferences.save(changed);
    m_menuBarMode = kept.menuBarMode;
    m_userInterval = kept.userInterval;
    recomputeEffectiveInterval(m_parts.clock.now()); // announces
}

} // namespace vellumor
