#pragma once

#include "accounts/DiscoveredFacts.h"
#include "base/Instant.h"
#include "diagnostics/AccountCaches.h"
#include "diagnostics/KnownCrashes.h"
#include "diagnostics/Redaction.h"
#include "store/OnboardingStore.h"
#include "store/Preferences.h"
#include "store/PresenceMarker.h"
#include "usage/UsageClient.h"

#include <optional>
#include <string>
#include <vector>

// ReportText: the words of the headless report, section by section. Pure. Each text ends in a line
// feed, and none holds a token, a mail address or an organisation's name.
namespace vellumor::ReportText {

[[nodiscard]] std::string banner();
[[nodiscard]] std::string crashes(const KnownCrashes& known, const std::string& folder,
                                  const Redaction& redaction);
// `line` is nothing without the file that telemetry keeps.
[[nodiscard]] std::string telemetry(const std::optional<std::string>& line,
                                    const Redaction& redaction);
[[nodiscard]] std::string presence(const std::optional<PresenceMarker::Presence>& own,
                                   const std::optional<PresenceMarker::Presence>& sibling,
                                   const Redaction& redaction);
[[nodiscard]] std::string onboarding(const OnboardingState& state, bool shouldShow);
// `claudePath` is nothing while no claude binary has been found.
[[nodiscard]] std::string revival(const Preferences& preferences,
                                  const std::optional<std::string>& claudePath,
                                  const Redaction& redaction);
[[nodiscard]] std::string keychain(std::size_t serviceCount);
[[nodiscard]] std::string home(const std::optional<std::vector<std::string>>& configDirs);
[[nodiscard]] std::string discovery(std::size_t accountCount);

// Why an account is what it is to the user, behind its directory: "~/.claude-work · not tracked".
[[nodiscard]] std::string title(const std::string& configDir, const std::string& wish);
// Identity, service, plan and token of one account; `title` is its first line.
[[nodiscard]] std::string account(const std::string& title, const DiscoveredFacts& facts,
                                  Instant now, const Redaction& redaction);
// What is kept about an account: the reading and the wait that the applications share, that of VS
// Code's extension, and the resets that were learnt.
[[nodiscard]] std::string caches(const AccountCaches& caches, Instant now,
                                 const Redaction& redaction);

// What the endpoint said about an account and what its pace leads to, without and with the history,
// or why it was not asked.
[[nodiscard]] std::string usageSkipped(TokenStatus status);
[[nodiscard]] std::string usage(const FetchResult& result, const UsageSamples& history, Instant now,
                                const Redaction& redaction);

[[nodiscard]] std::string unmatchedHeading(std::size_t count);
[[nodiscard]] std::string stagger(double userIntervalSeconds, int pollable);
[[nodiscard]] std::string rateLimitLog(const std::vector<std::string>& lines,
                                       const Redaction& redaction);

} // namespace vellumor::ReportText
