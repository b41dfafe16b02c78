#pragma once

#include "accounts/AccountStore.h"
#include "accounts/DiscoveredFacts.h"
#include "accounts/SharedIdentity.h"
#include "app/state/AccountUsageState.h"
#include "app/state/ChangeNotice.h"
#include "async/Task.h"
#include "notifications/NotificationManager.h"
#include "store/DiskPath.h"
#include "store/PollerHeartbeatStore.h"
#include "store/PreferencesStore.h"
#include "telemetry/TelemetryRecorder.h"
#include "usage/UsagePipeline.h"
#include "usage/UsageStores.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace vellumor {

// What the program knows, and the one place through which it changes: the accounts, their readings,
// and who is fetched when. Everybody who shows something observes it. Main thread only; rounds may
// overlap.
class AppState {
public:
    using History = UsageHistoryStore::Shared;

    struct Parts {
        Clock& clock;
        AccountStore& store;
        PreferencesStore& preferences;
        // What the shared accounts file holds now.
        std::function<Task<SharedIdentities>()> loadSharedIdentities;
        UsagePipeline& pipeline;
        UsageStores& stores;
        Serial<PollerHeartbeatStore>& heartbeat;
        std::function<Task<DiscoveryResult>(DiscoveryInputs inputs)> discover;
        // Those of the folders that are there.
        std::function<Task<std::set<std::string>>(std::vector<std::string> folders)>
            existingFolders;
        NotificationManager& notifications;
        // Canonical or with a tilde.
        std::function<Task<FolderState>(std::string typed)> examineFolder = {};
        TelemetryRecorder& telemetry = TelemetryRecorder::none();
    };

    // Everything borrowed outlives it.
    explicit AppState(Parts parts);
    AppState(const AppState&) = delete;
    AppState& operator=(const AppState&) = delete;

    // Calls `observer` after changes, once a turn of the event loop.
    void observe(std::function<void()> observer) { m_notice.observe(std::move(observer)); }

    // Looks for accounts anew. A scan that fails changes nothing.
    [[nodiscard]] Task<> rescan();
    // Gives each account without a reading the last good one of the run before.
    [[nodiscard]] Task<> seedFromSnapshots();
    // Fetches every account that may be fetched, two seconds apart; by hand all but the blocked
    // ones.
    [[nodiscard]] Task<> refresh(bool manual);
    // Fetches the one whose turn it is.
    [[nodiscard]] Task<> refreshNext();

    // From the user's interval and how many accounts may be polled now.
    void recomputeEffectiveInterval(Instant now);
    // Until the outcome of that fetch is applied.
    void markReviving(const std::string& id);
    // Takes one outcome over; the account may be gone meanwhile.
    void apply(const FetchOutcome& outcome, const std::string& id);

    // What the user does. Those that give a task scan anew. An account that is not there changes
    // nothing.
    void setTracked(const std::string& id, bool tracked);
    void setPinned(const std::string& id, bool pinned);
    void rename(const Account& account, const std::string& name); // blank changes nothing
    // Moves the accounts at these places of AccountList::ordered in front of the one at `toOffset`.
    void reorder(const std::vector<std::size_t>& fromOffsets, std::size_t toOffset);
    void remove(const Account& account);
    [[nodiscard]] Task<> restore(std::string configDir);
    [[nodiscard]] Task<> upsertManual(std::string configDir,
                                      std::optional<std::string> serviceOverride);
    [[nodiscard]] Task<> setServiceOverride(std::string id, std::optional<std::string> service);
    // Whether a folder that the user has typed can be added.
    [[nodiscard]] Task<FolderState> examineFolder(std::string typed);
    void dismissNewAccounts();
    void setMenuBarMode(MenuBarMode mode);
    void setUserInterval(double seconds); // held to 60 to 1800
    // Any other setting: `change` works on a copy, which is saved.
    void updatePreferences(const std::function<void(Preferences&)>& change);

    [[nodiscard]] Instant now() const { return m_parts.clock.now(); }
    [[nodiscard]] const std::vector<Account>& accounts() const { return m_accounts; }
    [[nodiscard]] const std::map<std::string, AccountUsageState>& states() const
    {
        return m_states;
    }
    [[nodiscard]] const AccountUsageState* state(const std::string& id) const;
    // Names of accounts that a scan has found for the first time, until they are dismissed.
    [[nodiscard]] const std::vector<std::string>& newAccountNames() const
    {
        return m_newAccountNames;
    }
    [[nodiscard]] std::optional<Instant> lastUpdated() const { return m_lastUpdated; }
    // In seconds: between two requests for one account, as it works out; between two ticks; and as
    // the user wants the first.
    [[nodiscard]] double effectiveInterval() const { return m_effectiveInterval; }
    [[nodiscard]] double slotInterval(Instant now) const;
    [[nodiscard]] double userInterval() const { return m_userInterval; }
    [[nodiscard]] MenuBarMode menuBarMode() const { return m_menuBarMode; }
    [[nodiscard]] const Preferences& preferences() const { return m_parts.preferences.current(); }
    // By config directory.
    [[nodiscard]] const std::map<std::string, History>& historyByDir() const
    {
        return m_historyByDir;
    }
    // Of the weeks that have ended, by config directory; each by the end of its week.
    [[nodiscard]] const std::map<std::string, WeeklyReceipts>& receiptsByDir() const
    {
        return m_receiptsByDir;
    }
    [[nodiscard]] const ResetAnchors& resetAnchorsByDir() const { return m_resetAnchorsByDir; }
    [[nodiscard]] const std::map<std::string, int>& parseFailStreak() const
    {
        return m_parseFailStreak;
    }
    // The tracked accounts that are not blocked: with a token that lives, and with one that Claude
    // Code may renew.
    [[nodiscard]] std::vector<Account> pollableAccounts(Instant now) const;
    [[nodiscard]] std::vector<Account> revivableAccounts(Instant now) const;
    // Of an account without a reading, or that is not there: false.
    [[nodiscard]] bool isStale(const std::string& id, Instant now) const;
    // The age of what is shown as a whole.
    [[nodiscard]] std::optional<Instant> dataUpdatedAt() const;
    [[nodiscard]] bool isRemoved(const std::string& configDir) const;
    [[nodiscard]] std::vector<RemovedAccount>
    removedAccounts(const AccountStore::NameOrder& byName) const
    {
        return m_parts.store.removedAccounts(byName);
    }

private:
    [[nodiscard]] const Account* account(const std::string& id) const;
    [[nodiscard]] std::vector<Account> rotation(Instant now) const;
    [[nodiscard]] std::vector<Account> manualTargets(Instant now) const;
    // What the user has just decided stands in the records; a scan also brings what the shared file
    // says, which goes first.
    void rederive(const SharedIdentities& shared = {});
    [[nodiscard]] Task<> prune(std::vector<std::string> looked);
    void noteNewAccounts();
    void claimHeartbeatIfProducing(Instant now);
    [[nodiscard]] Task<std::optional<double>> foreignCoverageWindow(Instant now);
    [[nodiscard]] Task<> fetchAndApply(FetchRequest request, std::chrono::milliseconds delay);
    [[nodiscard]] FetchRequest requestFor(const Account& target, bool manual,
                                          std::optional<double> coverageWindow);
    void tellOf(const Account& known, const FetchOutcome& outcome);
    [[nodiscard]] Task<> finishRound();
    [[nodiscard]] Task<> reloadHistory();
    [[nodiscard]] Task<> reloadAnchors();
    [[nodiscard]] Task<> reloadReceipts();
    [[nodiscard]] Task<> archiveDueReceipts(Instant now);
    [[nodiscard]] WeeklyReceipts dueReceipts(const std::string& configDir, Instant now) const;

    Parts m_parts;
    ChangeNotice m_notice;
    std::vector<Account> m_accounts;
    std::map<std::string, AccountUsageState> m_states; // by account id
    std::vector<std::string> m_newAccountNames;
    std::optional<Instant> m_lastUpdated;
    double m_effectiveInterval = 60.0;
    MenuBarMode m_menuBarMode;
    double m_userInterval;
    std::map<std::string, History> m_historyByDir;
    ResetAnchors m_resetAnchorsByDir;
    std::map<std::string, WeeklyReceipts> m_receiptsByDir;
    std::vector<DiscoveredFacts> m_lastFacts; // of the last scan that went well
    int m_scansBegun = 0;
    int m_scanShown = 0;                                 // which of them the accounts are from
    std::map<std::string, Instant> m_staggerLastAttempt; // by account id
    std::map<std::string, int> m_parseFailStreak;        // by account id
};

} // namespace vellumor
