#include "accounts/AccountStore.h"

#include "accounts/AccountMerge.h"
#include "accounts/ConfigDir.h"
#include "base/Text.h"
#include "store/FileReader.h"

#include <algorithm>
#include <filesystem>

namespace vellumor {

namespace {

std::optional<std::string> clean(const std::optional<std::string>& text)
{
    const auto stripped = Text::trimmed(text ? *text : std::string_view());
    if (stripped.empty())
        return std::nullopt;
    return std::string(stripped);
}

} // namespace

AccountStore::AccountStore(const FileStore& files, const SharedAccountsStore& shared,
                           const Clock& clock, std::string fileURL, std::string home, RunJob runJob)
    : m_files(files)
    , m_shared(shared)
    , m_clock(clock)
    , m_fileURL(std::move(fileURL))
    , m_home(std::move(home))
    , m_runJob(std::move(runJob))
{
    m_files.ensureDirectory(std::filesystem::path(m_fileURL).parent_path().string());
    const FileContents contents = readFile(m_fileURL);
    if (contents.status == ReadStatus::ok)
        m_records = decodeStoredAccounts(contents.bytes);
}

void AccountStore::persist()
{
    m_runJob([&files = m_files, shared = m_shared, file = m_fileURL,
              bytes = encodeStoredAccounts(m_records),
              identities = AccountMerge::sharedIdentities(m_records)] {
        if (bytes)
            files.write(*bytes, file);
        shared.save(identities);
    });
}

void AccountStore::mutate(const std::string& id, const std::function<void(StoredAccount&)>& change)
{
    const auto found = std::find_if(m_records.begin(), m_records.end(),
                                    [&](const auto& entry) { return entry.second.id == id; });
    if (found == m_records.end())
        return;
    change(found->second);
    persist();
}

void AccountStore::upsertManual(const std::string& configDir,
                                const std::optional<std::string>& serviceOverride)
{
    const std::string dir = ConfigDir::canonical(configDir, m_home);
    if (dir.empty())
        return;
    const auto known = m_records.find(dir);
    if (known != m_records.end()) {
        known->second.serviceOverride = clean(serviceOverride);
        known->second.removal.reset();
        persist();
        return;
    }
    const int order = AccountMerge::highestOrder(m_records) + 1;
    m_records[dir] = {AccountMerge::randomSlug(),
                      ConfigDir::derivedName(dir),
                      order,
                      true,
                      order < AccountMerge::pinnedByDefault,
                      clean(serviceOverride),
                      std::nullopt};
    persist();
}

void AccountStore::setTracked(const std::string& id, bool tracked)
{
    mutate(id, [&](StoredAccount& account) { account.tracked = tracked; });
}

void AccountStore::setPinned(const std::string& id, bool pinned)
{
    mutate(id, [&](StoredAccount& account) { account.pinned = pinned; });
}

void AccountStore::rename(const std::string& id, const std::string& name)
{
    mutate(id, [&](StoredAccount& account) { account.name = name; });
}

void AccountStore::setServiceOverride(const std::string& id,
                                      const std::optional<std::string>& service)
{
    mutate(id, [&](StoredAccount& account) { account.serviceOverride = clean(service); });
}

void AccountStore::remove(const std::string& id, const std::optional<std::string>& email,
                          const std::optional<std::string>& org)
{
    mutate(id, [&](StoredAccount& account) {
        account.removal = Removal{m_clock.now(), clean(email), clean(org)};
    });
}

void AccountStore::restore(const std::string& configDir)
{
    const auto found = m_records.find(ConfigDir::canonical(configDir, m_home));
    if (found == m_records.end() || !found->second.isRemoved())
        return;
    found->second.removal.reset();
    persist();
}

bool AccountStore::forgetVanishedRemovals(const std::function<bool(const std::string&)>& dirExists)
{
    const auto dropped = std::erase_if(m_records, [&](const auto& entry) {
        return entry.second.isRemoved() && !dirExists(entry.first);
    });
    if (dropped == 0)
        return false;
    persist();
    return true;
}

void AccountStore::reorder(const std::vector<std::string>& orderedIds)
{
    const auto placeOf = [&](const std::string& id) {
        return std::find(orderedIds.rbegin(), orderedIds.rend(), id);
    };
    std::vector<StoredAccount*> hidden;
    for (auto& [configDir, record] : m_records) {
        const auto place = placeOf(record.id);
        if (place != orderedIds.rend())
            record.order = static_cast<int>(std::distance(place, orderedIds.rend())) - 1;
        else if (record.isRemoved())
            hidden.push_back(&record);
    }
    std::stable_sort(hidden.begin(), hidden.end(), [](const auto* left, const auto* right) {
        return left->order < right->order;
    });
    int next = static_cast<int>(orderedIds.size());
    for (StoredAccount* record : hidden)
        record->order = next++;
    persist();
}

bool AccountStore::isRemoved(const std::string& configDir) const
{
    const auto found = m_records.find(ConfigDir::canonical(configDir, m_home));
    return found != m_records.end() && found->second.isRemoved();
}

std::vector<RemovedAccount> AccountStore::removedAccounts(const NameOrder& byName) const
{
    std::vector<RemovedAccount> removed;
    for (const auto& [configDir, record] : m_records) {
        if (record.removal)
            removed.push_back({configDir, record.name, record.removal->at});
    }
    std::stable_sort(removed.begin(), removed.end(), [&](const auto& left, const auto& right) {
        return byName(left.name, right.name);
    });
    return removed;
}

} // namespace vellumor
