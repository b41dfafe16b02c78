#include "status/sources/StatusFiles.h"

#include "accounts/AccountMerge.h"
#include "accounts/SharedAccountsStore.h"
#include "app/state/AccountList.h"
#include "app/state/Stagger.h"
#include "history/ResetAnchorStore.h"
#include "history/UsageHistoryStore.h"
#include "store/DiskPath.h"
#include "store/FileReader.h"
#include "store/Preferences.h"
#include "usage/caches/SharedCache.h"
#include "usage/caches/UsageSnapshotStore.h"
#include "usage/caches/VscodeStatusCache.h"

namespace vellumor::StatusFiles {

namespace {

// Empty for a file that is not there.
std::string bytesOf(const std::string& path)
{
    return readFile(path).bytes;
}

std::vector<DiscoveredFacts> factsOf(const StoredAccounts& records)
{
    std::vector<DiscoveredFacts> all;
    for (const std::string& configDir : knownDirs(records)) {
        if (!DiskPath::isFolder(configDir))
            continue;
        DiscoveredFacts facts;
        facts.configDir = configDir;
        facts.tokenStatus = TokenStatus::readable; // nobody has looked
        all.push_back(std::move(facts));
    }
    return all;
}

std::vector<Account> accountsIn(const Folders& folders)
{
    auto records = decodeStoredAccounts(bytesOf(folders.vellumor() + "/accounts.json"));
    const auto shared =
        SharedAccountsStore::decode(bytesOf(folders.quorle() + "/accounts.json")).identities;
    const auto noNewId = [] { return std::string(); }; // every directory here has a record
    return AccountMerge::merge(factsOf(records), shared, records, noNewId);
}

// As a fetch does that may not ask the endpoint: what the sibling shares, else this program's own,
// with what the extension of VS Code knows better.
std::optional<Usage> readingOf(const std::string& configDir, const Folders& folders,
                               const UsageSnapshotStore::File& snapshots)
{
    std::optional<Usage> base;
    const auto own = snapshots.snapshots.find(configDir);
    if (const auto shared = SharedCache::readFrom(folders.quorle() + "/usage-cache", configDir))
        base = shared->usage();
    else if (own != snapshots.snapshots.end())
        base = own->second.usage();
    return VscodeStatusCache::merge(std::move(base), VscodeStatusCache::read(configDir));
}

double userInterval(const Folders& folders)
{
    const auto chosen = Preferences::decode(bytesOf(folders.vellumor() + "/preferences.json"));
    return chosen.value_or(Preferences()).clamped().userInterval;
}

AccountUsageState stateOf(std::optional<Usage> reading)
{
    AccountUsageState state;
    state.usage = std::move(reading);
    return state;
}

} // namespace

StatusInput read(const Folders& folders)
{
    StatusInput input;
    input.accounts = accountsIn(folders);
    const auto snapshots =
        UsageSnapshotStore::File::decode(bytesOf(folders.vellumor() + "/usage-snapshots.json"));
    const auto tracked = AccountList::orderedTracked(input.accounts);
    for (const Account& account : tracked) {
        const std::string& dir = account.configDir;
        input.states[account.id] = stateOf(readingOf(dir, folders, snapshots));
        input.histories[dir] = std::make_shared<const UsageSamples>(
            UsageHistoryStore::loadFrom(folders.vellumor() + "/history", dir));
    }
    input.anchors = ResetAnchorStore::loadFrom(folders.vellumor() + "/reset-anchors.json");
    input.effectiveInterval = Stagger::effectiveInterval(userInterval(folders), tracked.size());
    return input;
}

StatusReport report(const Folders& folders, Instant now, const ShortTime& shortTime)
{
    StatusReport report = read(folders).report(now, shortTime);
    for (StatusAccount& account : report.accounts) {
        if (account.state == "loading")
            account.state = "noData";
    }
    return report;
}

} // namespace vellumor::StatusFiles
