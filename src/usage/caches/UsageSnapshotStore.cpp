#include "usage/caches/UsageSnapshotStore.h"

#include "base/Json.h"
#include "base/StrictReader.h"
#include "base/VersionedFile.h"
#include "store/FileReader.h"

#include <filesystem>
#include <set>

namespace vellumor {

namespace {

constexpr int schemaVersion = 1;

} // namespace

UsageSnapshotStore::File UsageSnapshotStore::File::decode(std::string_view bytes)
{
    const auto json = parseJsonObject(bytes);
    if (!json)
        return {};
    const Json* entries = entriesOf(*json, "snapshots", schemaVersion);
    if (entries == nullptr || !entries->is_object())
        return {};
    File file;
    for (const auto& [configDir, value] : entries->items()) {
        auto decoded = UsageCacheFile::decode(value);
        auto* snapshot = std::get_if<UsageCacheFile>(&decoded);
        if (snapshot == nullptr)
            return {};
        file.snapshots[configDir] = std::move(*snapshot);
    }
    return file;
}

UsageSnapshotStore::UsageSnapshotStore(const FileStore& files, std::string fileURL)
    : m_files(files)
    , m_fileURL(std::move(fileURL))
{
    m_files.ensureDirectory(std::filesystem::path(m_fileURL).parent_path().string());
}

std::map<std::string, Usage> UsageSnapshotStore::load() const
{
    std::map<std::string, Usage> readings;
    for (const auto& [configDir, snapshot] : read().snapshots)
        readings.emplace(configDir, snapshot.usage());
    return readings;
}

void UsageSnapshotStore::save(const Usage& usage, const std::string& configDir)
{
    File file = read();
    file.snapshots[configDir] = UsageCacheFile::of(usage, std::nullopt);
    write(file);
}

void UsageSnapshotStore::prune(const std::vector<std::string>& keptConfigDirs)
{
    const std::set<std::string> kept(keptConfigDirs.begin(), keptConfigDirs.end());
    File file = read();
    std::erase_if(file.snapshots, [&](const auto& entry) { return !kept.contains(entry.first); });
    write(file);
}

UsageSnapshotStore::File UsageSnapshotStore::read() const
{
    const FileContents contents = readFile(m_fileURL);
    return contents.status == ReadStatus::ok ? File::decode(contents.bytes) : File();
}

void UsageSnapshotStore::write(const File& file)
{
    Json snapshots = Json::object();
    for (const auto& [configDir, snapshot] : file.snapshots)
        snapshots[configDir] = snapshot.encode();
    const Json json = {{"schemaVersion", schemaVersion}, {"snapshots", std::move(snapshots)}};
    if (const auto bytes = writeJson(json, JsonLayout::pretty))
        m_files.write(*bytes, m_fileURL);
}

} // namespace vellumor
