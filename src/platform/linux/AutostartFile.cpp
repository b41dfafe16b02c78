#include "platform/linux/AutostartFile.h"

#include "base/FileHandle.h"
#include "base/SecureRandom.h"
#include "base/Text.h"
#include "platform/linux/AutostartEntry.h"
#include "store/FileReader.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>
#include <tuple>

namespace vellumor {

namespace {

const FileCalls systemCalls;

constexpr const char* fileName = "dev.quorle.vellumor.desktop";
constexpr std::size_t sizeLimit = std::size_t{256} * 1024;
constexpr mode_t newFileMode = 0644;
constexpr mode_t newFolderMode = 0700;

std::string reason(int error)
{
    return std::generic_category().message(error);
}

// 0, or errno. Folders that are there keep their mode.
int makeFolders(const std::string& path)
{
    struct stat status {};
    if (::stat(path.c_str(), &status) == 0)
        return S_ISDIR(status.st_mode) ? 0 : ENOTDIR;
    const std::string parent = std::filesystem::path(path).parent_path().string();
    if (!parent.empty() && parent != path) {
        if (const int error = makeFolders(parent))
            return error;
    }
    return ::mkdir(path.c_str(), newFolderMode) == 0 || errno == EEXIST ? 0 : errno;
}

// Where the file itself is when `path` is a link to it.
std::string behindLink(const std::string& path)
{
    std::error_code error;
    const auto target = std::filesystem::canonical(path, error);
    return error ? path : target.string();
}

int writeAll(const FileCalls& calls, int file, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t written = calls.write(file, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return written < 0 ? errno : EIO;
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return 0;
}

// 0, or errno. The mode of the file at `like` is taken over, if there is one.
int writeNew(const FileCalls& calls, const std::string& path, const std::string& like,
             std::string_view bytes)
{
    const FileHandle file(calls.create(path.c_str(), newFileMode));
    if (!file.valid())
        return errno;
    struct stat status {};
    if (::stat(like.c_str(), &status) == 0)
        std::ignore = ::fchmod(file.get(), status.st_mode & 07777);
    if (const int error = writeAll(calls, file.get(), bytes))
        return error;
    const bool isOnDisk =
        calls.fsync(file.get()) == 0 || errno == EINVAL || errno == ENOSYS || errno == ENOTSUP;
    return isOnDisk ? 0 : errno;
}

} // namespace

AutostartFile::AutostartFile(const std::string& configFolder, std::string program)
    : AutostartFile(configFolder, std::move(program), systemCalls)
{
}

AutostartFile::AutostartFile(const std::string& configFolder, std::string program,
                             const FileCalls& calls)
    : m_calls(calls)
    , m_path(configFolder + "/autostart/" + fileName)
    , m_program(std::move(program))
{
}

bool AutostartFile::isEnabled() const
{
    const FileContents contents = readFile(m_path, sizeLimit);
    return contents.status == ReadStatus::ok && AutostartEntry::isOn(contents.bytes);
}

std::optional<std::string> AutostartFile::setEnabled(bool on)
{
    const FileContents contents = readFile(m_path, sizeLimit);
    if (!on) {
        const auto text = AutostartEntry::switchedOff(contents.bytes);
        return text ? save(*text) : remove();
    }
    if (!m_program.starts_with('/'))
        return reason(ENOENT);
    // A desktop entry is UTF-8, and has no other way to spell a byte.
    if (!Text::isValidUtf8(m_program))
        return reason(EILSEQ);
    return save(AutostartEntry::switchedOn(contents.bytes, m_program));
}

std::optional<std::string> AutostartFile::remove() const
{
    if (m_calls.unlinkat(AT_FDCWD, m_path.c_str(), 0) == 0 || errno == ENOENT || errno == ENOTDIR)
        return std::nullopt;
    return reason(errno);
}

std::optional<std::string> AutostartFile::save(const std::string& text) const
{
    const std::string target = behindLink(m_path);
    const std::filesystem::path folder = std::filesystem::path(target).parent_path();
    if (const int error = makeFolders(folder.string()))
        return reason(error);
    const std::string temp =
        (folder / ("." + std::string(fileName) + "." + SecureRandom::uuid() + ".tmp")).string();
    int error = writeNew(m_calls, temp, target, text);
    if (error == 0 && m_calls.rename(temp.c_str(), target.c_str()) == 0)
        return std::nullopt;
    if (error == 0)
        error = errno;
    ::unlink(temp.c_str());
    return reason(error);
}

std::string ownProgram(const Environment& environment)
{
    std::error_code ignored;
    return ownProgram(environment,
                      std::filesystem::read_symlink("/proc/self/exe", ignored).string());
}

std::string programToStart(const Environment& environment)
{
    return programToStart(ownProgram(environment));
}

std::string programToStart(const std::string& own)
{
    const auto folder = std::filesystem::path(own).parent_path();
    const std::string front = (folder / VELLUMOR_FRONT_FROM_DESKTOP).lexically_normal().string();
    return ::access(front.c_str(), X_OK) == 0 ? front : own;
}

std::string ownProgram(const Environment& environment, const std::string& running)
{
    // What the system says of a file that has been replaced since the start.
    constexpr std::string_view replaced = " (deleted)";
    const auto image = value(environment, "APPIMAGE");
    const auto unpacked = value(environment, "APPDIR");
    // Inherited from another AppImage, out of which somebody started this program, they are not
    // about it.
    const bool isOurs =
        image && image->starts_with('/') && (!unpacked || running.starts_with(*unpacked + "/"));
    if (isOurs)
        return *image;
    const bool isGone = running.ends_with(replaced);
    return isGone ? running.substr(0, running.size() - replaced.size()) : running;
}

} // namespace vellumor
