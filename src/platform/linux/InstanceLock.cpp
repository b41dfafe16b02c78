#include "platform/linux/InstanceLock.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

namespace vellumor {

namespace {

struct flock wholeFile()
{
    struct flock lock {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    return lock;
}

void writePid(int file)
{
    const std::string text = std::to_string(::getpid()) + "\n";
    if (::ftruncate(file, 0) == 0) {
        [[maybe_unused]] const auto written = ::pwrite(file, text.data(), text.size(), 0);
    }
}

} // namespace

InstanceLock::InstanceLock(const FileStore& files, std::string path)
    : m_files(files)
    , m_path(std::move(path))
{
}

std::optional<int> InstanceLock::holder() const
{
    if (m_file.valid())
        return std::nullopt;
    const FileHandle file(::open(m_path.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    struct flock lock = wholeFile();
    if (!file.valid() || ::fcntl(file.get(), F_GETLK, &lock) != 0 || lock.l_type == F_UNLCK)
        return std::nullopt;
    return lock.l_pid;
}

InstanceLock::Result InstanceLock::acquire()
{
    m_files.ensureDirectory(std::filesystem::path(m_path).parent_path().string());
    FileHandle file(::open(m_path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK,
                           FileStore::filePermissions));
    if (!file.valid())
        return Result::unavailable;
    struct flock lock = wholeFile();
    if (::fcntl(file.get(), F_SETLK, &lock) != 0)
        return errno == EACCES || errno == EAGAIN ? Result::taken : Result::unavailable;
    ::fchmod(file.get(), FileStore::filePermissions);
    writePid(file.get());
    m_file = std::move(file);
    return Result::held;
}

void InstanceLock::release()
{
    const FileHandle closing = std::move(m_file);
}

} // namespace vellumor
