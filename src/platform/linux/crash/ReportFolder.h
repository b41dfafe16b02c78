#pragma once

#include "platform/linux/crash/CrashReportText.h"
#include "store/FileStore.h"

#include <optional>
#include <string>
#include <vector>

namespace vellumor {

// The folder of crash reports, as the importer fills it. Every function looks at the disk, and
// blocks. One caller at a time.
class ReportFolder {
public:
    // More reports than that are not kept: each start reads them all.
    static constexpr std::size_t maxReports = 50;

    // `files` outlives it. Creates nothing.
    ReportFolder(const FileStore& files, std::string path);

    // Those of the crashes that have no report yet.
    [[nodiscard]] std::vector<CoreDump> withoutReport(std::vector<CoreDump> dumps) const;

    // Writes a report of it, with the folder where that is missing; false when it has one, or it
    // cannot be written.
    bool write(const CoreDump& dump, const CrashReportText::Known& known) const;

    // Removes the oldest reports beyond the last maxReports. Touches no other file.
    void trim() const;

private:
    [[nodiscard]] std::optional<std::string> freePathFor(const CoreDump& dump) const;

    const FileStore& m_files;
    std::string m_path;
};

} // namespace vellumor
