#pragma once

#include "accounts/DiscoveredFacts.h"
#include "accounts/KeychainReader.h"
#include "accounts/StoredAccount.h"
#include "base/Environment.h"
#include "diagnostics/AccountCaches.h"
#include "diagnostics/KnownCrashes.h"
#include "store/Folders.h"
#include "store/OnboardingStore.h"
#include "store/Preferences.h"
#include "store/PresenceMarker.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace vellumor {

// What the headless report tells, but for the endpoint's answers: everything that can be read on
// this machine.
struct Findings {
    KnownCrashes crashes;
    // What telemetry is allowed and calls itself; nothing without its file.
    std::optional<std::string> telemetry;
    Preferences preferences;
    OnboardingState onboarding;
    bool shouldShowOnboarding = false;
    std::optional<PresenceMarker::Presence> ownPresence;
    std::optional<PresenceMarker::Presence> siblingPresence;
    std::vector<std::string> services;                  // that hold a credential
    std::optional<std::vector<std::string>> configDirs; // in the home folder; nothing: not listable
    std::vector<DiscoveredFacts> accounts;
    std::map<std::string, std::string> wishes; // by config directory: why an account is not shown
    std::vector<DiscoveredFacts> unmatched;    // services that no account took; configDir is empty
    std::map<std::string, AccountCaches> caches; // by config directory, for each of the accounts
    int pollable = 0;
    std::vector<std::string> rateLimitLines;

    // Reads, and creates nothing: the report must not make what it reports. Blocks.
    [[nodiscard]] static Findings gather(const Environment& environment, const Folders& folders,
                                         ServiceDirectories& directories,
                                         const KeychainReader& keychain);
};

} // namespace vellumor
