#include "platform/linux/crash/ReportFolder.h"

#include "store/FileReader.h"

#include <algorithm>
#include <filesystem>

namespace vellumor {

namespace {

constexpr int maxWithinOneSecond = 20;

} // namespace

ReportFolder::ReportFolder(const FileStore& files, std::string path)
    : m_files(files)
    , m_path(std::move(path))
{
}

std::vector<CoreDump> ReportFolder::withoutReport(std::vector<CoreDump> dumps) const
{
    std::erase_if(dumps, [this](const CoreDump& dump) { return !freePathFor(dump); });
    return dumps;
}

bool ReportFolder::write(const CoreDump& dump, const CrashReportText::Known& known) const
{
    const auto path = freePathFor(dump);
    const auto report = CrashReportText::make(dump, known);
    return path && report && m_files.write(*report, *path);
}

// Where its report is to be written; nothing when it has one. Others that crashed within the same
// second stand under the same name with a number.
std::optional<std::string> ReportFolder::freePathFor(const CoreDump& dump) const
{
    for (int number = 1; number <= maxWithinOneSecond; ++number) {
        std::string path = m_path + "/" + CrashReportText::fileName(dump.crashedAt, number);
        const FileContents contents = readFile(path);
        if (contents.status == ReadStatus::missing)
            return path;
        if (CrashReportText::incidentOf(contents.bytes) == dump.incidentID())
            return std::nullopt;
    }
    return std::nullopt;
}

void ReportFolder::trim() const
{
    namespace fs = std::filesystem;
    std::vector<std::string> names;
    std::error_code error;
    for (fs::directory_iterator entry(m_path, error), end; !error && entry != end;
         entry.increment(error)) {
        std::string name = entry->path().filename().string();
        if (name.starts_with("Vellumor-") && name.ends_with(".ips"))
            names.push_back(std::move(name));
    }
    std::sort(names.begin(), names.end());
    for (std::size_t i = 0; i + maxReports < names.size(); ++i)
        fs::remove(m_path + "/" + names[i], error);
}

} // namespace vellumor
