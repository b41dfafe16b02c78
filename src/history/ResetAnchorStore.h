#pragma once

#include "history/ResetAnchor.h"
#include "store/FileStore.h"
#include "usage/model/Usage.h"

#include <string>
#include <string_view>
#include <vector>

namespace vellumor {

// The reset anchors of all accounts, in one file. Knows no threads: one caller at a time, which
// Serial<> sees to. A file that is missing, damaged or of a newer version counts as empty and is
// replaced by the next write; no failure is reported.
class ResetAnchorStore {
public:
    // Makes nothing on disk. `files` outlives the store.
    ResetAnchorStore(const FileStore& files, std::string fileURL);

    [[nodiscard]] ResetAnchors load() const;
    // Learns from one reading. Writes nothing while the reports stay where they were.
    void record(const Usage& usage, const std::string& configDir);
    // Forgets every other account; writes always.
    void prune(const std::vector<std::string>& keptConfigDirs);

    // The same of a file that may not be there, creating nothing.
    [[nodiscard]] static ResetAnchors loadFrom(const std::string& fileURL);
    [[nodiscard]] static ResetAnchors decode(std::string_view bytes);

private:
    void save(const ResetAnchors& anchors);

    const FileStore& m_files;
    std::string m_fileURL;
};

} // namespace vellumor
