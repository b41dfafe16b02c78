#pragma once

#include "accounts/SharedAccountsStore.h"
#include "accounts/StoredAccount.h"
#include "base/Clock.h"
#include "base/RunJob.h"
#include "store/FileStore.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vellumor {

// A hidden account, as the settings list it.
struct RemovedAccount {
    std::string configDir;
    std::string name;
    Instant at{};
    bool operator==(const RemovedAccount&) const = default;
};

// What the user decided about each config directory: its name, place, and whether it is tracked,
// pinned or hidden. Every change is handed to `runJob` at once, to be written here and into the
// shared file. Main thread only.
class AccountStore {
public:
    // Compares two names for the list of hidden accounts: true when the first comes first.
    using NameOrder = std::function<bool(const std::string&, const std::string&)>;

    // Loads; a file that is missing or broken counts as empty. All borrowed things outlive the
    // store.
    AccountStore(const FileStore& files, const SharedAccountsStore& shared, const Clock& clock,
                 std::string fileURL, std::string home, RunJob runJob);

    // Adds a directory that the user typed, or brings a hidden one back. Empty text does nothing.
    void upsertManual(const std::string& configDir,
                      const std::optional<std::string>& serviceOverride);
    void setTracked(const std::string& id, bool tracked);
    void setPinned(const std::string& id, bool pinned);
    void rename(const std::string& id, const std::string& name); // exactly as given
    void setServiceOverride(const std::string& id,
                            const std::optional<std::string>& service); // blank clears
    // Hides the account; `email` and `org` tell who was signed in.
    void remove(const std::string& id, const std::optional<std::string>& email,
                const std::optional<std::string>& org);
    void restore(const std::string& configDir);
    // Drops hidden records whose directory is gone. True when there were any.
    bool forgetVanishedRemovals(const std::function<bool(const std::string&)>& dirExists);
    // Numbers the accounts in this order, hidden ones that are not listed behind them.
    void reorder(const std::vector<std::string>& orderedIds);
    // Writes both files.
    void persist();

    // For the merge, which changes them in place; persist() follows.
    [[nodiscard]] StoredAccounts& records() { return m_records; }
    [[nodiscard]] const StoredAccounts& records() const { return m_records; }
    [[nodiscard]] std::vector<std::string> knownDirs() const
    {
        return vellumor::knownDirs(m_records);
    }
    // Whether the directory, as the user typed it, belongs to a hidden account.
    [[nodiscard]] bool isRemoved(const std::string& configDir) const;
    [[nodiscard]] std::vector<RemovedAccount> removedAccounts(const NameOrder& byName) const;

private:
    void mutate(const std::string& id, const std::function<void(StoredAccount&)>& change);

    const FileStore& m_files;
    const SharedAccountsStore& m_shared;
    const Clock& m_clock;
    std::string m_fileURL;
    std::string m_home;
    RunJob m_runJob;
    StoredAccounts m_records;
};

} // namespace vellumor
