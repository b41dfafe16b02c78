#include "store/FileStore.h"

#include "base/FileHandle.h"
#include "base/Json.h"
#include "base/Log.h"
#include "base/SecureRandom.h"
#include "store/FileReader.h"

#include <fmt/format.h>

#include <fcntl.h>
#include <fts.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <thread>
#include <tuple>

namespace vellumor {

namespace {

const FileCalls systemCalls;

std::string folderOf(const std::string& path)
{
    const std::string folder = std::filesystem::path(path).parent_path().string();
    return folder.empty() ? "." : folder;
}

std::string nameOf(const std::string& path)
{
    return std::filesystem::path(path).filename().string();
}

// Of what is there, links excepted.
void setMode(const std::string& path, mode_t mode)
{
    std::ignore = ::fchmodat(AT_FDCWD, path.c_str(), mode, AT_SYMLINK_NOFOLLOW);
}

// True as well where the file system has no such operation.
bool bringToDisk(const FileCalls& calls, int file)
{
    return calls.fsync(file) == 0 || errno == EINVAL || errno == ENOSYS || errno == ENOTSUP;
}

Json readObject(const std::string& path)
{
    const FileContents contents = readFile(path);
    if (contents.status != ReadStatus::ok)
        return Json::object();
    return parseJsonObject(contents.bytes).value_or(Json::object());
}

Json mergeFields(Json present, const Json& fields)
{
    for (const auto& [key, value] : fields.items()) {
        if (value.is_null())
            present.erase(key);
        else
            present[key] = value;
    }
    return present;
}

void backoff(int attempt)
{
    // Between 1 and attempt x 4 ms, so that two writers do not meet again at the same moment.
    const auto most = static_cast<std::uint32_t>(attempt) * 4000U;
    std::this_thread::sleep_for(
        std::chrono::microseconds(1000U + SecureRandom::below(most - 999U)));
}

} // namespace

FileStore::FileStore()
    : FileStore(systemCalls)
{
}

FileStore::FileStore(const FileCalls& calls)
    : m_calls(calls)
{
}

void FileStore::ensureDirectory(const std::string& path) const
{
    struct stat status {};
    if (::lstat(path.c_str(), &status) == 0) {
        if (S_ISDIR(status.st_mode) && (status.st_mode & 07777) != dirPermissions)
            setMode(path, dirPermissions);
        return;
    }
    const std::string parent = folderOf(path);
    if (parent != path && ::access(parent.c_str(), F_OK) != 0)
        ensureDirectory(parent);
    if (m_calls.mkdir(path.c_str(), dirPermissions) == 0)
        setMode(path, dirPermissions); // what the umask may have taken
}

bool FileStore::writeAll(int file, std::string_view bytes) const
{
    while (!bytes.empty()) {
        const ssize_t written = m_calls.write(file, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

std::optional<std::string> FileStore::writeTemp(std::string_view bytes,
                                                const std::string& path) const
{
    const std::string folder = folderOf(path);
    ensureDirectory(folder);
    std::string temp =
        fmt::format("{}/.{}.{}.{}.tmp", folder, nameOf(path), ::getpid(), SecureRandom::uuid());
    FileHandle file(m_calls.create(temp.c_str(), filePermissions));
    if (!file.valid())
        return std::nullopt;
    // The umask may have taken bits of the owner's own; on disk before the rename, so that a power
    // cut cannot leave the new name with old or no bytes.
    std::ignore = ::fchmod(file.get(), filePermissions);
    if (!writeAll(file.get(), bytes) || !bringToDisk(m_calls, file.get())) {
        ::unlink(temp.c_str());
        return std::nullopt;
    }
    return temp;
}

bool FileStore::renameItem(const std::string& from, const std::string& to) const
{
    if (m_calls.rename(from.c_str(), to.c_str()) != 0) {
        ::unlink(from.c_str());
        return false;
    }
    const FileHandle folder(::open(folderOf(to).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (folder.valid())
        std::ignore = m_calls.fsync(folder.get());
    return true;
}

bool FileStore::write(std::string_view bytes, const std::string& path) const
{
    const auto temp = writeTemp(bytes, path);
    return temp && renameItem(*temp, path);
}

FileStore::Fingerprint FileStore::fingerprint(const std::string& path) const
{
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0)
        return {};
    const double modified = static_cast<double>(status.st_mtim.tv_sec) +
                            static_cast<double>(status.st_mtim.tv_nsec) * 1e-9;
    return {true, status.st_ino, status.st_size, modified};
}

std::optional<FileStore::UpdateOutcome> FileStore::attemptUpdate(const std::string& path,
                                                                 const Update& update, int attempt,
                                                                 const Delta& delta) const
{
    const Fingerprint before = fingerprint(path);
    const Json object = readObject(path);
    if (update.currentSchemaVersion) {
        const auto found = object.find(update.schemaVersionKey);
        if (found != object.end() && found->is_number() &&
            found->get<double>() > *update.currentSchemaVersion) {
            log(Tag::fileStore,
                fmt::format("{} is schemaVersion {:.0f} (we know {}) — reading only, not writing",
                            nameOf(path), found->get<double>(), *update.currentSchemaVersion));
            return UpdateOutcome::refusedNewerSchema;
        }
    }
    if (update.onAfterRead)
        update.onAfterRead(attempt);
    const auto changed = delta(object);
    if (!changed)
        return UpdateOutcome::noChange;
    const auto bytes = writeJson(*changed, JsonLayout::pretty);
    if (!bytes)
        return UpdateOutcome::failed;
    const auto temp = writeTemp(*bytes, path);
    if (!temp)
        return UpdateOutcome::failed;
    if (fingerprint(path) == before)
        return renameItem(*temp, path) ? UpdateOutcome::written : UpdateOutcome::failed;
    ::unlink(temp->c_str());
    backoff(attempt);
    return std::nullopt; // another writer came first
}

FileStore::UpdateOutcome FileStore::updateJSONObject(const std::string& path, const Update& update,
                                                     const Delta& delta) const
{
    const int attempts = std::max(update.maxAttempts, 1);
    for (int attempt = 1; attempt <= attempts; ++attempt) {
        if (const auto outcome = attemptUpdate(path, update, attempt, delta))
            return *outcome;
    }
    log(Tag::fileStore, fmt::format("{}: {} conflicting writes, falling back to last-writer-wins",
                                    nameOf(path), update.maxAttempts));
    const auto changed = delta(readObject(path));
    const auto bytes = changed ? writeJson(*changed, JsonLayout::pretty) : std::nullopt;
    if (!bytes)
        return UpdateOutcome::noChange;
    return write(*bytes, path) ? UpdateOutcome::lastWriterWins : UpdateOutcome::failed;
}

Json FileStore::mergeAtKeyLevel(Json base, const Json& delta)
{
    for (const auto& [key, value] : delta.items()) {
        const auto present = base.find(key);
        if (value.is_null())
            base.erase(key);
        else if (present != base.end() && present->is_object() && value.is_object())
            *present = mergeFields(std::move(*present), value);
        else
            base[key] = value;
    }
    return base;
}

void FileStore::healTree(const std::string& root) const
{
    std::string path = root; // fts wants names that it could change
    char* roots[] = {path.data(), nullptr};
    FTS* tree = ::fts_open(roots, FTS_PHYSICAL | FTS_NOCHDIR, nullptr);
    if (tree == nullptr)
        return;
    while (const FTSENT* entry = ::fts_read(tree)) {
        switch (entry->fts_info) {
        case FTS_D:
        case FTS_DNR:
            setMode(entry->fts_path, dirPermissions);
            break;
        case FTS_DP: // healed on the way down
        case FTS_SL:
        case FTS_SLNONE:
            break;
        default:
            setMode(entry->fts_path, filePermissions);
            break;
        }
    }
    ::fts_close(tree);
}

} // namespace vellumor
