#include "diagnostics/ReportText.h"

#include "base/Format.h"
#include "base/IntervalDisplay.h"
#include "base/Version.h"
#include "history/Projection.h"
#include "usage/UsagePipeline.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace vellumor::ReportText {

namespace {

const char* trueOrFalse(bool value)
{
    return value ? "true" : "false";
}

const char* yesOrDash(const std::optional<std::string>& value)
{
    return value ? "yes" : "—";
}

std::string presenceValue(const std::optional<PresenceMarker::Presence>& presence,
                          const Redaction& redaction)
{
    if (!presence)
        return "no";
    return fmt::format("yes (v{}, since {})", redaction.shown(presence->version),
                       redaction.shown(presence->firstSeenAt));
}

// When a token ends: nothing to say about one that was cleared.
std::string expiry(const DiscoveredFacts& facts, Instant now)
{
    if (!facts.tokenExpiresAt || facts.tokenStatus == TokenStatus::signedOut)
        return {};
    if (*facts.tokenExpiresAt > now)
        return " · ends in " + Format::countdown(*facts.tokenExpiresAt, now);
    return " · ended " + Format::relativeAge(*facts.tokenExpiresAt, now);
}

std::string resetText(const std::optional<Instant>& reset, Instant now)
{
    return reset ? "resets in " + Format::countdown(*reset, now) : "no reset time";
}

// What the pace of the most urgent of the windows leads to.
std::string phrase(const std::vector<LimitWindow>& windows, const UsageSamples& history,
                   Instant now, const Redaction& redaction)
{
    const auto projection = Projection::evaluate(windows, history, now);
    return projection ? redaction.shown(projection->summary(now)) : "none";
}

std::string windowLine(const LimitWindow& window, const UsageSamples& history, Instant now,
                       const Redaction& redaction)
{
    const std::string percent = fmt::format("{:.1f}%", window.percent);
    return fmt::format("    usage    : {:>6}  {:<18}  {} · projection {}\n", percent,
                       resetText(window.resetsAt, now),
                       redaction.shown(LimitWindow::title(window.kind, window.scope)),
                       phrase({window}, history, now, redaction));
}

const char* displayName(ExtraUsage::CreditDisplay display)
{
    switch (display) {
    case ExtraUsage::CreditDisplay::normal:
        return "normal";
    case ExtraUsage::CreditDisplay::exhausted:
        return "exhausted";
    case ExtraUsage::CreditDisplay::hidden:
        break;
    }
    return "hidden";
}

std::string amount(const std::optional<double>& value)
{
    return value ? fmt::format("{:.2f}", *value) : "—";
}

const char* flag(const std::optional<bool>& value)
{
    return value ? trueOrFalse(*value) : "—";
}

std::string extraLine(const ExtraUsage& extra)
{
    return fmt::format(
        "    extra    : display={} enabled={} used={} limit={} util={} userDisabled={} "
        "spendLimitReached={} everEnabled={}\n",
        displayName(extra.display()), trueOrFalse(extra.isEnabled), amount(extra.usedCredits),
        amount(extra.monthlyLimit), amount(extra.utilization), flag(extra.userDisabled),
        flag(extra.spendLimitReached), flag(extra.creditsEverEnabled));
}

// What the pace of the windows alone leads to, and what that of the last hour does.
std::string forecastLine(const Usage& usage, const UsageSamples& history, Instant now,
                         const Redaction& redaction)
{
    const std::string stateless = phrase(usage.windows, {}, now, redaction);
    const std::string recent = phrase(usage.windows, history, now, redaction);
    const std::string more =
        recent == stateless ? " (no recency coverage or no change)" : " · with history " + recent;
    return "    project  : stateless=" + stateless + more + "\n";
}

std::string readingText(const Usage& usage, const UsageSamples& history, Instant now,
                        const Redaction& redaction)
{
    std::string text;
    for (const LimitWindow& window : usage.windows)
        text += windowLine(window, history, now, redaction);
    if (usage.windows.empty())
        text += "    usage    : (no windows returned)\n";
    if (usage.extraUsage)
        text += extraLine(*usage.extraUsage);
    return text + forecastLine(usage, history, now, redaction);
}

std::string sharedLine(const std::optional<UsageCacheFile>& shared, Instant now)
{
    if (!shared)
        return "    cache    : shared (none yet)\n";
    const bool isFresh = UsagePipeline::isFresh(shared->fetchedAt, now, std::nullopt);
    std::string text = fmt::format("    cache    : shared {} ({} window(s))",
                                   isFresh ? "fresh" : "stale", shared->usage().windows.size());
    if (shared->backoffUntil && *shared->backoffUntil > now)
        text += " backoff until " + Format::isoWholeSeconds(*shared->backoffUntil);
    return text + "\n";
}

std::string vscodeLine(const std::optional<VscodeStatusCache::Snapshot>& vscode, Instant now)
{
    if (!vscode)
        return "    vscode   : (no status cache)\n";
    return fmt::format("    vscode   : 5h {:.1f}% {} · 7d {:.1f}% {} · updated {}\n",
                       vscode->util5h, resetText(vscode->reset5h, now), vscode->util7d,
                       resetText(vscode->reset7d, now),
                       Format::relativeAge(vscode->updatedAt, now));
}

// Anchors are learnt from weekly windows alone.
std::string anchorLine(const std::string& kind, const ResetAnchor& anchor, Instant now,
                       const Redaction& redaction)
{
    const auto next = nextReset(anchor, kind, "weekly", now);
    return fmt::format("    anchor   : {} {} last={}{}\n", redaction.shown(kind),
                       next ? Format::isoWholeSeconds(*next) : "—",
                       Format::isoWholeSeconds(anchor.resetsAt),
                       anchor.offCadence ? "  OFF-CADENCE (estimates suppressed)" : "");
}

} // namespace

std::string banner()
{
    return fmt::format("Vellumor {} — diagnostics\n\n", version);
}

std::string crashes(const KnownCrashes& known, const std::string& folder,
                    const Redaction& redaction)
{
    if (known.reportCount == 0)
        return fmt::format("crash  : no crash reports on disk ({})\n", redaction.shown(folder));
    std::string text = fmt::format("crash  : {} report(s) on disk\n", known.reportCount);
    for (const auto& [digest, isReported] : known.crashes)
        text += fmt::format("    {} sig={} area={} v={} uptime={}\n",
                            isReported ? "already reported" : "unreported", digest.signature,
                            digest.area, redaction.shown(digest.crashedVersion), digest.uptime);
    return text;
}

std::string telemetry(const std::optional<std::string>& line, const Redaction& redaction)
{
    return "Telemetry: " + (line ? redaction.shown(*line) : "not written yet") + "\n";
}

std::string presence(const std::optional<PresenceMarker::Presence>& own,
                     const std::optional<PresenceMarker::Presence>& sibling,
                     const Redaction& redaction)
{
    return fmt::format("Presence:  vellumor={} · ostrelline installed={}\n",
                       presenceValue(own, redaction), presenceValue(sibling, redaction));
}

std::string onboarding(const OnboardingState& state, bool shouldShow)
{
    return fmt::format("Onboarding: completedVersion={} current={} shouldShow={}\n",
                       state.completedVersion, OnboardingState::currentVersion,
                       trueOrFalse(shouldShow));
}

std::string revival(const Preferences& preferences, const std::optional<std::string>& claudePath,
                    const Redaction& redaction)
{
    const std::string manual = preferences.claudeBinaryPath.empty()
                                   ? "(none)"
                                   : redaction.shown(preferences.claudeBinaryPath);
    return fmt::format("CLI revival: {} · manual path={} · claude={}\n",
                       preferences.tokenRevivalEnabled ? "enabled" : "disabled", manual,
                       claudePath ? redaction.shown(*claudePath) : "not found");
}

std::string keychain(std::size_t serviceCount)
{
    return fmt::format("Keychain: {} Claude credential service(s) enumerated.\n", serviceCount);
}

std::string home(const std::optional<std::vector<std::string>>& configDirs)
{
    if (!configDirs)
        return "Home: home enumeration FAILED\n";
    return fmt::format("Home: {} config dir(s)\n", configDirs->size());
}

std::string discovery(std::size_t accountCount)
{
    return fmt::format("Discovery: {} account(s) from scan\n", accountCount);
}

std::string title(const std::string& configDir, const std::string& wish)
{
    return wish.empty() ? configDir : configDir + " · " + wish;
}

std::string account(const std::string& title, const DiscoveredFacts& facts, Instant now,
                    const Redaction& redaction)
{
    std::string text = fmt::format("\n{}\n", redaction.shown(title));
    text += fmt::format("    identity : email={} org={} displayName={}\n", yesOrDash(facts.email),
                        yesOrDash(facts.org), yesOrDash(facts.displayName));
    text +=
        fmt::format("    service  : {}\n",
                    facts.resolvedService ? redaction.shown(*facts.resolvedService) : "unresolved");
    text += fmt::format("    plan     : {}\n", facts.plan ? redaction.shown(*facts.plan) : "—");
    text += fmt::format("    token    : {}{}", name(facts.tokenStatus), expiry(facts, now));
    if (facts.tokenStatus == TokenStatus::signedOut)
        text +=
            " · cleared by Claude Code (empty access token, expiresAt 0) — sign in to this account";
    return text + "\n";
}

std::string caches(const AccountCaches& caches, Instant now, const Redaction& redaction)
{
    std::string text = sharedLine(caches.shared, now) + vscodeLine(caches.vscode, now);
    for (const auto& [kind, anchor] : caches.anchors)
        text += anchorLine(kind, anchor, now, redaction);
    if (caches.anchors.empty())
        text += "    anchors  : (none learned yet)\n";
    return text;
}

std::string usageSkipped(TokenStatus status)
{
    return fmt::format("    usage    : (skipped — token {})\n", name(status));
}

std::string usage(const FetchResult& result, const UsageSamples& history, Instant now,
                  const Redaction& redaction)
{
    if (const auto* error = std::get_if<UsageFetchError>(&result))
        return fmt::format("    usage    : FETCH FAILED — {}\n",
                           redaction.shown(error->description()));
    return readingText(std::get<Usage>(result), history, now, redaction);
}

std::string unmatchedHeading(std::size_t count)
{
    return fmt::format("\nUnmatched credential item(s): {} — enumerated but not selected for any "
                       "discovered account (an orphan, or a superseded name):\n",
                       count);
}

std::string stagger(double userInterval, int pollable)
{
    const double effective = std::max({userInterval, 60.0 * pollable, 60.0});
    const double slot = effective / std::max(pollable, 1);
    const int designedFor = static_cast<int>(std::floor(userInterval / 60.0));
    return fmt::format(
        "\nStagger:  ~{} chosen, {} pollable → effective {} · one request per {} slot · "
        "designed for up to {} account{}\n",
        IntervalDisplay::shortText(userInterval), pollable, IntervalDisplay::shortText(effective),
        IntervalDisplay::shortText(slot), designedFor, designedFor == 1 ? "" : "s");
}

std::string rateLimitLog(const std::vector<std::string>& lines, const Redaction& redaction)
{
    if (lines.empty())
        return "429 log:  empty — no 429 ever observed on this install\n";
    std::string text =
        fmt::format("429 log:  last {} entr{}\n", lines.size(), lines.size() == 1 ? "y" : "ies");
    for (const std::string& line : lines)
        text += "    " + redaction.shown(line) + "\n";
    return text;
}

} // namespace vellumor::ReportText
