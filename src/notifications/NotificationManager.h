#pragma once

#include "accounts/Account.h"
#include "notifications/KnownAccounts.h"
#include "notifications/ProjectedAlerts.h"
#include "notifications/Thresholds.h"
#include "notifications/WindowAnchors.h"
#include "usage/FetchOutcome.h"

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace vellumor {

// Turns the readings of all accounts into notifications: each alert once for one period of its
// window, and none from a reading that is not new. Everything is in memory: after a start the first
// reading of an account only seeds the comparison. Main thread only.
class NotificationManager {
public:
    using Sink = std::function<void(const std::string& title, const std::string& body)>;

    struct Parts {
        Sink sink;                                     // hands one notification to the desktop
        std::function<Instant()> now;                  // the clock's
        std::function<std::string(Instant)> shortTime; // hour and minute as the user writes them
    };

    explicit NotificationManager(Parts parts);
    NotificationManager(const NotificationManager&) = delete;
    NotificationManager& operator=(const NotificationManager&) = delete;

    // After each notification that was handed over; may be empty.
    std::function<void()> onDeliver;

    // A reading of an account. Only one from the endpoint counts, directly or after Claude Code has
    // renewed the token. `history`: of the account, up to the reading before. Seconds.
    void observe(const Account& account, const Usage& usage, std::optional<UsageSource> source,
                 const Preferences& preferences, const UsageSamples& history,
                 double effectiveInterval);
    // What a fetch of an account has come to, whatever it brought.
    void noteOutcome(const Account& account, const FetchOutcome& outcome,
                     const Preferences& preferences);
    // The accounts that a scan has found; gives those that the scan before had not.
    [[nodiscard]] std::vector<Account> reconcile(const std::vector<Account>& accounts,
                                                 const Preferences& preferences);

    // How many alerts are remembered; bounded, since each is forgotten after eight days.
    [[nodiscard]] std::size_t rememberedAlerts() const { return m_firedKeys.size(); }

private:
    struct Reading;

    void deliver(const std::string& body);
    void pruneFiredKeys();
    [[nodiscard]] std::vector<Rollover> takeRollovers(const Reading& reading);
    void takeProjected(const Reading& reading, const UsageSamples& history);
    [[nodiscard]] std::set<std::string> takeThresholds(const Reading& reading);
    void tellRollovers(const Reading& reading, const std::vector<Rollover>& rollovers);
    void takeCustom(const Reading& reading, const std::set<std::string>& limitReached);
    void takeCreditBurn(const Reading& reading);
    void takeClosing(const Reading& reading);
    void takeEpisode(std::set<std::string>& episodes, const std::string& accountId, bool isIn,
                     const Preferences& preferences, const std::string& body);

    Parts m_parts;
    std::map<std::string, Usage> m_lastObserved;          // by account id; canonical
    std::set<std::string> m_firedKeys;                    // of all accounts
    std::map<std::string, WindowAnchors> m_windowAnchors; // by account id
    std::map<std::string, EtaHolds> m_etaHolds;           // by account id
    std::map<std::string, Instant> m_projectedLastFired;  // by account id
    std::set<std::string> m_forbidden;                    // account ids
    std::set<std::string> m_signInNeeded;                 // account ids
    KnownAccounts m_known;
};

} // namespace vellumor
