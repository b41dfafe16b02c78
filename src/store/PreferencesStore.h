#pragma once

#include "base/RunJob.h"
#include "store/FileStore.h"
#include "store/Preferences.h"

#include <string>

namespace vellumor {

// The current settings; each change is handed to `runJob` at once, to be written. Main thread only.
// A file that is missing, broken or of a newer version counts as the defaults, and is replaced by
// the first change.
class PreferencesStore {
public:
    // Loads; creates nothing. `files` outlives the store.
    PreferencesStore(const FileStore& files, std::string fileURL, RunJob runJob);

    // Clamps, keeps and writes; gives what was kept. A failed write leaves the file as it was.
    Preferences save(const Preferences& preferences);

    // Always within bounds.
    [[nodiscard]] const Preferences& current() const { return m_current; }
    [[nodiscard]] const std::string& fileURL() const { return m_fileURL; }

private:
    const FileStore& m_files;
    std::string m_fileURL;
    RunJob m_runJob;
    Preferences m_current;
};

} // namespace vellumor
