#include "usage/caches/SharedCache.h"

#include "base/Format.h"
#include "base/Json.h"
#include "store/AccountFiles.h"
#include "store/DiskPath.h"
#include "store/FileReader.h"

namespace vellumor {

SharedCache::SharedCache(const FileStore& files, std::string dir)
    : m_files(files)
    , m_dir(std::move(dir))
{
    m_files.ensureDirectory(m_dir);
}

std::optional<UsageCacheFile> SharedCache::read(const std::string& configDir) const
{
    return readFrom(m_dir, configDir);
}

void SharedCache::write(const Usage& usage, const std::string& configDir,
                        std::optional<Instant> backoffUntil)
{
    const auto file = UsageCacheFile::of(usage, backoffUntil);
    if (const auto bytes = writeJson(file.encode(), JsonLayout::pretty))
        m_files.write(*bytes, AccountFiles::path(m_dir, configDir));
}

FileStore::UpdateOutcome SharedCache::setBackoff(std::optional<Instant> until,
                                                 const std::string& configDir)
{
    const std::string path = AccountFiles::path(m_dir, configDir);
    if (!DiskPath::exists(path))
        return FileStore::UpdateOutcome::noChange;
    FileStore::Update update;
    update.currentSchemaVersion = schemaVersion;
    const auto change = [&](const Json& present) -> std::optional<Json> {
        if (!DiskPath::exists(path)) // another program has just removed it
            return std::nullopt;
        Json changed = present;
        changed["backoffUntil"] = until ? Json(Format::isoFractional(*until)) : Json();
        return changed;
    };
    return m_files.updateJSONObject(path, update, change);
}

void SharedCache::prune(const std::vector<std::string>& keptConfigDirs)
{
    AccountFiles::prune(m_dir, keptConfigDirs);
}

std::optional<UsageCacheFile> SharedCache::readFrom(const std::string& dir,
                                                    const std::string& configDir)
{
    const FileContents contents = readFile(AccountFiles::path(dir, configDir));
    if (contents.status != ReadStatus::ok)
        return std::nullopt;
    auto decoded = UsageCacheFile::decode(std::string_view(contents.bytes));
    auto* file = std::get_if<UsageCacheFile>(&decoded);
    if (file == nullptr || file->schemaVersion > schemaVersion)
        return std::nullopt;
    return std::move(*file);
}

} // namespace vellumor
