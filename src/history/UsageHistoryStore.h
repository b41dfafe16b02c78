#pragma once

#include "history/UsageSample.h"
#include "store/FileStore.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace vellumor {

// The last seven days of every account's readings, one file an account. What was read or written
// last is kept and shared with whoever asks, and read again only when the file has changed. Knows
// no threads: one caller at a time, which Serial<> sees to; the samples that it gives may go
// anywhere. An unreadable file counts as empty and heals at the next append; no failure is
// reported, since history is expendable.
class UsageHistoryStore {
public:
    using Shared = std::shared_ptr<const UsageSamples>; // never null

    static constexpr double retention = 604800.0; // seconds

    // Makes the folder. `files` outlives the store.
    UsageHistoryStore(const FileStore& files, std::string dir);

    // Adds the reading's sample unless the last one is of the same moment, and drops what `now` has
    // left behind the retention.
    void append(const Usage& usage, const std::string& configDir, Instant now);
    // The file as it stands, not trimmed. The same samples as before while it stands as before.
    [[nodiscard]] Shared load(const std::string& configDir);
    // Forgets every other account.
    void prune(const std::vector<std::string>& keptConfigDirs);

    // The same of a folder that may not be there, creating nothing.
    [[nodiscard]] static UsageSamples loadFrom(const std::string& dir,
                                               const std::string& configDir);
    // Those at or after `now` minus `retentionSeconds`.
    [[nodiscard]] static UsageSamples trim(UsageSamples samples, Instant now,
                                           double retentionSeconds);

private:
    struct Known {
        FileStore::Fingerprint file; // as it was when these were read or written
        Shared samples;
    };

    const FileStore& m_files;
    std::string m_dir;
    std::map<std::string, Known> m_known; // by path
};

} // namespace vellumor
