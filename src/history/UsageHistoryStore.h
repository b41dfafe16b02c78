#pragma once

#include "history/UsageSample.h"
#include "store/FileStore.h"

#include <optional>
#include <string>
#include <vector>

namespace vellumor {

// The last seven days of every account's readings, one file an account. Keeps nothing in memory.
// Knows no threads: one caller at a time, which Serial<> sees to. An unreadable file counts as
// empty and heals at the next append; no failure is reported, since history is expendable.
class UsageHistoryStore {
public:
    static constexpr double retention = 604800.0; // seconds

    // Makes the folder. `files` outlives the store.
    UsageHistoryStore(const FileStore& files, std::string dir);

    // Adds the reading's sample unless the last one is of the same moment, and drops what `now` has
    // left behind the retention.
    void append(const Usage& usage, const std::string& configDir, Instant now);
    // The file as it stands, not trimmed.
    [[nodiscard]] UsageSamples load(const std::string& configDir) const;
    // What a reader keeps: the file's state when it was read, and its samples.
    struct Loaded {
        FileStore::Fingerprint file;
        std::optional<UsageSamples> samples; // nothing when the file is as the reader knows it
    };
    [[nodiscard]] Loaded loadUnless(const std::optional<FileStore::Fingerprint>& known,
                                    const std::string& configDir) const;
    // Forgets every other account.
    void prune(const std::vector<std::string>& keptConfigDirs);

    // The same of a folder that may not be there, creating nothing.
    [[nodiscard]] static UsageSamples loadFrom(const std::string& dir,
                                               const std::string& configDir);
    // Those at or after `now` minus `retentionSeconds`.
    [[nodiscard]] static UsageSamples trim(UsageSamples samples, Instant now,
                                           double retentionSeconds);

private:
    const FileStore& m_files;
    std::string m_dir;
};

} // namespace vellumor
