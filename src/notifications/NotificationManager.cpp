#include "notifications/NotificationManager.h"

#include "notifications/AlertKey.h"
#include "notifications/CreditBurn.h"
#include "notifications/CustomThresholds.h"
#include "notifications/SessionClosing.h"

#include <algorithm>

namespace vellumor {

namespace {

constexpr double leastGrace = 300.0; // seconds

bool isNew(std::optional<UsageSource> source)
{
    return source == UsageSource::endpoint || source == UsageSource::cli;
}

} // namespace

// One reading on its way through the manager.
struct NotificationManager::Reading {
    const Account& account;
    const Preferences& preferences;
    double grace; // seconds for which a reset is news
    Usage usage;  // canonical, once the rollovers are taken
    std::vector<WindowStep> steps;
    std::optional<Usage> previous;

    [[nodiscard]] Instant now() const { return usage.fetchedAt; }
    [[nodiscard]] const Usage* before() const { return previous ? &*previous : nullptr; }
};

NotificationManager::NotificationManager(Parts parts)
    : m_parts(std::move(parts))
{
}

void NotificationManager::deliver(const std::string& body)
{
    m_parts.sink("Vellumor", body);
    if (onDeliver)
        onDeliver();
}

void NotificationManager::observe(const Account& account, const Usage& usage,
                                  std::optional<UsageSource> source, const Preferences& preferences,
                                  const UsageSamples& history, double effectiveInterval)
{
    if (!isNew(source))
        return;
    Reading reading{account, preferences, std::max(3 * effectiveInterval, leastGrace),
                    usage,   {},          {}};
    const auto rolledOver = takeRollovers(reading);
    pruneFiredKeys();
    auto canonical = canonicalized(std::move(reading.usage), m_windowAnchors[account.id]);
    reading.usage = std::move(canonical.usage);
    reading.steps = std::move(canonical.steps);
    if (const auto known = m_lastObserved.find(account.id); known != m_lastObserved.end())
        reading.previous = std::move(known->second);
    m_lastObserved.insert_or_assign(account.id, reading.usage);
    takeProjected(reading, history);
    if (!preferences.notificationsEnabled || !reading.previous)
        return;
    const auto limitReached = takeThresholds(reading);
    tellRollovers(reading, rolledOver);
    takeCustom(reading, limitReached);
    takeCreditBurn(reading);
    takeClosing(reading);
}

// Whether or not it is told of, one reset is noticed once.
std::vector<Rollover> NotificationManager::takeRollovers(const Reading& reading)
{
    WindowAnchors& anchors = m_windowAnchors[reading.account.id];
    auto found = rollovers(reading.account.id, reading.usage, anchors, reading.now(), reading.grace,
                           m_firedKeys);
    for (const Rollover& rollover : found) {
        m_firedKeys.insert(rollover.key);
        retire(rollover, anchors, reading.now());
    }
    return found;
}

void NotificationManager::pruneFiredKeys()
{
    const Instant now = m_parts.now();
    std::erase_if(m_firedKeys,
                  [now](const std::string& key) { return AlertKey::isOutlived(key, now); });
}

void NotificationManager::takeProjected(const Reading& reading, const UsageSamples& history)
{
    const std::string& id = reading.account.id;
    const Preferences& preferences = reading.preferences;
    const auto lastFired = m_projectedLastFired.find(id);
    EtaHolds& holds = m_etaHolds[id];
    const auto candidates = Projection::candidates(reading.usage.windows, history, reading.now());
    ProjectedOutcome outcome = advanceProjected(
        {id, holds, candidates, reading.usage.windows,
         preferences.notifyProjectedWeekly && preferences.notificationsEnabled,
         preferences.notifyProjectedSession && preferences.notificationsEnabled,
         lastFired == m_projectedLastFired.end() ? std::nullopt : std::optional(lastFired->second),
         reading.now(), m_firedKeys});
    holds = std::move(outcome.holds);
    m_firedKeys.insert(outcome.consumedKeys.begin(), outcome.consumedKeys.end());
    if (outcome.firedAt)
        m_projectedLastFired.insert_or_assign(id, *outcome.firedAt);
    if (outcome.fire) {
        deliver(reading.account.displayName + " · on pace to hit the " + outcome.fire->windowTitle +
                " limit ~" +
                Projection::momentText(outcome.fire->wall, reading.now(), m_parts.shortTime));
    }
}

// Gives the names of the windows of which it has told that they are full.
std::set<std::string> NotificationManager::takeThresholds(const Reading& reading)
{
    const auto fires =
        Thresholds::newlyFired(reading.account.id, reading.steps, reading.preferences, m_firedKeys);
    const auto subsumed = Thresholds::subsumedKeys(fires);
    m_firedKeys.insert(subsumed.begin(), subsumed.end());
    std::set<std::string> limitReached;
    for (const Thresholds::Fire& fire : fires) {
        if (subsumed.contains(fire.key))
            continue;
        m_firedKeys.insert(fire.key);
        deliver(Thresholds::body(fire, reading.account.displayName, reading.now()));
        if (fire.threshold == Threshold::sessionLimit || fire.threshold == Threshold::weeklyLimit)
            limitReached.insert(fire.windowKind);
    }
    return limitReached;
}

void NotificationManager::tellRollovers(const Reading& reading,
                                        const std::vector<Rollover>& rollovers)
{
    if (!reading.preferences.notifyQuotaReset)
        return;
    for (const Rollover& rollover : rollovers) {
        if (!rollover.isStale)
            deliver(reading.account.displayName + " · " + rollover.title + " usage has reset");
    }
}

void NotificationManager::takeCustom(const Reading& reading,
                                     const std::set<std::string>& limitReached)
{
    const auto threshold = reading.preferences.customThreshold(reading.account.id);
    if (!threshold)
        return;
    for (const auto& fire :
         CustomThresholds::customFired(reading.account.id, reading.steps, *threshold,
                                       reading.preferences, m_firedKeys, limitReached)) {
        m_firedKeys.insert(fire.key);
        deliver(CustomThresholds::body(fire, reading.account.displayName));
    }
}

void NotificationManager::takeCreditBurn(const Reading& reading)
{
    if (reading.preferences.notifyCreditBurn &&
        CreditBurn::creditBurnCrossed(reading.before(), reading.usage))
        deliver(CreditBurn::body(reading.usage, reading.account.displayName));
}

void NotificationManager::takeClosing(const Reading& reading)
{
    if (!reading.preferences.notifySessionClosing)
        return;
    const auto fire =
        SessionClosing::fired(reading.account.id, reading.usage, reading.before(),
                              reading.preferences.sessionClosingLeadMinutes, m_firedKeys);
    if (!fire)
        return;
    m_firedKeys.insert(fire->key);
    deliver(SessionClosing::body(*fire, reading.account.displayName, m_parts.shortTime));
}

void NotificationManager::noteOutcome(const Account& account, const FetchOutcome& outcome,
                                      const Preferences& preferences)
{
    const bool isForbidden =
        outcome.error && outcome.error->kind == UsageFetchError::Kind::forbidden;
    takeEpisode(m_forbidden, account.id, isForbidden, preferences,
                account.displayName + " · Blocked while updating usage numbers (HTTP 403)");
    takeEpisode(m_signInNeeded, account.id, outcome.revival == RevivalStatus::needsSignIn,
                preferences, account.displayName + " · Sign in to this account in Claude Code");
}

// Told at its beginning alone; one that began while notifications were off is not told later.
void NotificationManager::takeEpisode(std::set<std::string>& episodes, const std::string& accountId,
                                      bool isIn, const Preferences& preferences,
                                      const std::string& body)
{
    if (!isIn)
        episodes.erase(accountId);
    else if (episodes.insert(accountId).second && preferences.notificationsEnabled)
        deliver(body);
}

std::vector<Account> NotificationManager::reconcile(const std::vector<Account>& accounts,
                                                    const Preferences& preferences)
{
    auto fresh = m_known.reconcile(accounts);
    if (preferences.notificationsEnabled) {
        for (const Account& account : fresh)
            deliver("New account discovered · " + account.displayName);
    }
    return fresh;
}

} // namespace vellumor
