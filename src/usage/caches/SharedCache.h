#pragma once

#include "store/FileStore.h"
#include "usage/model/UsageCacheFile.h"

#include <optional>
#include <string>
#include <vector>

namespace vellumor {

// The folder in which the applications of the toolkit leave their readings for one another, one
// file an account. Knows no threads: one caller at a time, which Serial<> sees to. A file that
// cannot be read, or of a newer version, is a file that is not there.
class SharedCache {
public:
    static constexpr int schemaVersion = 2;

    // Makes the folder. `files` outlives the cache.
    SharedCache(const FileStore& files, std::string dir);

    [[nodiscard]] std::optional<UsageCacheFile> read(const std::string& configDir) const;
    // Replaces the account's file; a failure is ignored.
    void write(const Usage& usage, const std::string& configDir,
               std::optional<Instant> backoffUntil);
    // Tells the others until when nobody should call for this account; all else in the file stays.
    // Without a file there is nothing to tell, and the outcome is `noChange`.
    FileStore::UpdateOutcome setBackoff(std::optional<Instant> until, const std::string& configDir);
    // Forgets every other account.
    void prune(const std::vector<std::string>& keptConfigDirs);

    // The same of a folder that may not be there, creating nothing.
    [[nodiscard]] static std::optional<UsageCacheFile> readFrom(const std::string& dir,
                                                                const std::string& configDir);

private:
    const FileStore& m_files;
    std::string m_dir;
};

} // namespace vellumor
