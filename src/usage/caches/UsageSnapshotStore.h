#pragma once

#include "store/FileStore.h"
#include "usage/model/UsageCacheFile.h"

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace vellumor {

// This program's own last good reading of every account, so that there is something to show at the
// start. Knows no threads: one caller at a time, which Serial<> sees to. A file that cannot be
// read, or of a newer version, counts as empty; no failure is reported.
class UsageSnapshotStore {
public:
    // What the file holds.
    struct File {
        std::map<std::string, UsageCacheFile> snapshots; // by config directory

        // Strict: one bad entry makes the whole file empty.
        [[nodiscard]] static File decode(std::string_view bytes);
    };

    // Makes the file's folder. `files` outlives the store.
    UsageSnapshotStore(const FileStore& files, std::string fileURL);

    // Config directory to reading.
    [[nodiscard]] std::map<std::string, Usage> load() const;
    void save(const Usage& usage, const std::string& configDir);
    // Forgets every other account; writes always.
    void prune(const std::vector<std::string>& keptConfigDirs);

private:
    [[nodiscard]] File read() const;
    void write(const File& file);

    const FileStore& m_files;
    std::string m_fileURL;
};

} // namespace vellumor
