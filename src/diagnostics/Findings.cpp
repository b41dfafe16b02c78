#include "diagnostics/Findings.h"

#include "accounts/AccountDiscovery.h"
#include "diagnostics/crash/CrashReportScanner.h"
#include "diagnostics/crash/CrashReportState.h"
#include "history/ResetAnchorStore.h"
#include "history/UsageHistoryStore.h"
#include "store/FileReader.h"
#include "store/FileStore.h"
#include "store/PreferencesStore.h"
#include "telemetry/Telemetry.h"
#include "usage/RateLimitLog.h"
#include "usage/caches/SharedCache.h"

#include <algorithm>

namespace vellumor {

namespace {

constexpr int rateLimitLinesShown = 5;

StoredAccounts readRecords(const Folders& folders)
{
    const FileContents contents = readFile(folders.vellumor() + "/accounts.json");
    return contents.status == ReadStatus::ok ? decodeStoredAccounts(contents.bytes)
                                             : StoredAccounts();
}

KnownCrashes readCrashes(const Folders& folders)
{
    const std::string directory = folders.crashReports();
    const auto state = CrashReportState::load(CrashReportState::fileURL(folders.vellumor()));
    KnownCrashes known;
    known.reportCount = CrashReportScanner::ownReports(directory).size();
    for (CrashDigest& digest :
         CrashReportScanner::digests(directory, CrashReportScanner::recentLimit)) {
        const bool isReported = state.isConsumed(digest);
        known.crashes.push_back({std::move(digest), isReported});
    }
    return known;
}

std::optional<std::string> readTelemetry(const Folders& folders)
{
    const FileContents contents = readFile(folders.vellumor() + "/telemetry.json");
    if (contents.status == ReadStatus::missing)
        return std::nullopt;
    const Instant untold{}; // a date that is missing
    const auto config = TelemetryConfig::decode(contents.bytes, untold);
    return config ? Telemetry::diagnosticsLine(*config)
                  : "unreadable, to be replaced at the next start";
}

// What the user decided about an account that keeps it out of sight; empty for most.
std::string wishOf(const StoredAccount& record)
{
    if (record.isRemoved())
        return "removed by the user";
    return record.tracked ? "" : "not tracked";
}

bool isPollable(const DiscoveredFacts& facts, const StoredAccounts& records)
{
    const auto record = records.find(facts.configDir);
    const bool wanted =
        record == records.end() || (record->second.tracked && !record->second.isRemoved());
    return wanted && facts.tokenStatus == TokenStatus::readable;
}

std::vector<DiscoveredFacts> unmatchedOf(const Findings& findings, const KeychainReader& keychain)
{
    std::vector<DiscoveredFacts> unmatched;
    for (const std::string& service : findings.services) {
        const auto selected = [&](const auto& facts) { return facts.resolvedService == service; };
        if (std::any_of(findings.accounts.begin(), findings.accounts.end(), selected))
            continue;
        const auto probe = keychain.probe(service);
        DiscoveredFacts facts;
        facts.resolvedService = service;
        facts.plan = probe.plan;
        facts.tokenStatus = probe.status;
        facts.tokenExpiresAt = probe.expiresAt;
        unmatched.push_back(std::move(facts));
    }
    return unmatched;
}

// Preferences, the first-run flow and the marks of the two applications.
void readOwnFiles(Findings& findings, const Environment& environment, const Folders& folders)
{
    const FileStore files;
    findings.preferences =
        PreferencesStore(files, folders.vellumor() + "/preferences.json", runAtOnce).current();
    const OnboardingStore onboarding(files, folders.vellumor() + "/onboarding.json", runAtOnce);
    findings.onboarding = onboarding.current();
    findings.shouldShowOnboarding = onboarding.shouldShow(environment);
    findings.ownPresence = PresenceMarker::read("vellumor", folders.quorle());
    if (PresenceMarker::siblingInstalled("ostrelline", folders.quorle()))
        findings.siblingPresence = PresenceMarker::read("ostrelline", folders.quorle());
    findings.rateLimitLines =
        RateLimitLog::recentIn(folders.vellumor() + "/429-log.jsonl", rateLimitLinesShown);
}

void readCaches(Findings& findings, const Folders& folders)
{
    auto anchors = ResetAnchorStore::loadFrom(folders.vellumor() + "/reset-anchors.json");
    for (const DiscoveredFacts& facts : findings.accounts) {
        const std::string& dir = facts.configDir;
        findings.caches[dir] = {SharedCache::readFrom(folders.quorle() + "/usage-cache", dir),
                                VscodeStatusCache::read(dir), std::move(anchors[dir]),
                                UsageHistoryStore::loadFrom(folders.vellumor() + "/history", dir)};
    }
}

} // namespace

Findings Findings::gather(const Environment& environment, const Folders& folders,
                          ServiceDirectories& directories, const KeychainReader& keychain)
{
    Findings findings;
    findings.crashes = readCrashes(folders);
    findings.telemetry = readTelemetry(folders);
    readOwnFiles(findings, environment, folders);
    const StoredAccounts records = readRecords(folders);
    for (const auto& [configDir, record] : records)
        findings.wishes[configDir] = wishOf(record);
    auto discovery = AccountDiscovery::live({knownDirs(records), serviceOverrides(records)},
                                            folders.home, directories, keychain);
    findings.configDirs = AccountDiscovery::homeConfigDirs(folders.home);
    // The report shows the services that the scan has seen, which asks for them once.
    discovery.enumerateServices = [&findings, enumerate = discovery.enumerateServices] {
        return findings.services = enumerate();
    };
    findings.accounts = discovery.run().facts;
    readCaches(findings, folders);
    findings.unmatched = unmatchedOf(findings, keychain);
    findings.pollable = static_cast<int>(
        std::count_if(findings.accounts.begin(), findings.accounts.end(),
                      [&](const auto& facts) { return isPollable(facts, records); }));
    return findings;
}

} // namespace vellumor
