#pragma once

#include "base/Instant.h"
#include "base/RunJob.h"
#include "store/FileStore.h"

#include <optional>
#include <string>
#include <string_view>

namespace vellumor {

// What is kept about updates between two runs.
struct UpdateState {
    bool automatic = true;            // whether the program looks for updates by itself
    int serial = 0;                   // of the newest feed that was seen; an older one is refused
    std::optional<Instant> checkedAt; // when the feed was answered the last time
    bool operator==(const UpdateState&) const = default;

    // Nothing when a key is missing or of a wrong type, the serial is negative, or the version is
    // not 1.
    [[nodiscard]] static std::optional<UpdateState> decode(std::string_view bytes);
    [[nodiscard]] std::optional<std::string> encode() const;
};

// The same, in a file; each change is handed to `runJob` at once, to be written. Main thread only.
// A file that is missing or broken counts as the defaults; one of a newer version does, too, and is
// not written over.
class UpdateStore {
public:
    // Loads; creates nothing. `files` outlives the store.
    UpdateStore(const FileStore& files, std::string fileURL, RunJob runJob);

    void save(const UpdateState& state); // writes nothing when nothing has changed
    [[nodiscard]] const UpdateState& current() const { return m_current; }

private:
    const FileStore& m_files;
    std::string m_fileURL;
    RunJob m_runJob;
    UpdateState m_current;
    bool m_isOfNewerVersion = false;
};

} // namespace vellumor
