#include "store/FileReader.h"

#include "base/FileHandle.h"
#include "store/DiskPath.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <span>

namespace vellumor {

namespace {

// The only place that tells apart why a file could not be opened.
ReadStatus statusOf(int error)
{
    switch (error) {
    case ENOENT:
    case ENOTDIR:
        return ReadStatus::missing;
    case EACCES:
    case EPERM:
        return ReadStatus::denied;
    default:
        return ReadStatus::unreadable;
    }
}

struct OpenedFile {
    FileHandle handle;
    std::size_t size = 0;
    ReadStatus status = ReadStatus::ok;
    int error = 0;
};

OpenedFile failed(int error)
{
    return {FileHandle(), 0, statusOf(error), error};
}

OpenedFile openRegular(const std::string& path, std::size_t limit)
{
    // Without O_NONBLOCK, opening a pipe would wait for its writer.
    FileHandle handle(
        ::open(DiskPath::spelled(path).c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!handle.valid())
        return failed(errno);
    struct stat status {};
    if (::fstat(handle.get(), &status) != 0)
        return failed(errno);
    if (S_ISDIR(status.st_mode))
        return failed(EISDIR);
    if (!S_ISREG(status.st_mode))
        return {FileHandle(), 0, ReadStatus::unreadable, 0};
    const auto size = static_cast<std::size_t>(status.st_size);
    if (size > limit)
        return failed(EFBIG);
    return {std::move(handle), size};
}

// Room that fast decoders want behind the bytes: they look at many at a time.
constexpr std::size_t spareBehind = 64;

// Fills `into` from the file; gives how much there was, or -1 with errno set.
ssize_t readInto(const FileHandle& file, std::span<char> into)
{
    std::size_t done = 0;
    while (done < into.size()) {
        const ssize_t got = ::read(file.get(), into.data() + done, into.size() - done);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            return -1;
        if (got == 0)
            break;
        done += static_cast<std::size_t>(got);
    }
    return static_cast<ssize_t>(done);
}

} // namespace

FileContents readFile(const std::string& path, std::size_t limit)
{
    OpenedFile file = openRegular(path, limit);
    if (file.status != ReadStatus::ok)
        return {file.status, {}, file.error};
    // Writers replace files whole, so the size told at opening is the size; a file that grows is
    // cut there.
    std::string bytes;
    bytes.reserve(file.size + spareBehind);
    bytes.resize(file.size);
    const ssize_t size = readInto(file.handle, bytes);
    if (size < 0)
        return {ReadStatus::unreadable, {}, errno};
    bytes.resize(static_cast<std::size_t>(size));
    return {ReadStatus::ok, std::move(bytes), 0};
}

SecretFileContents readSecretFile(const std::string& path, SecretBytes& memory)
{
    OpenedFile file = openRegular(path, maxFileSize);
    if (file.status != ReadStatus::ok)
        return {file.status, {}, file.error};
    SecretBytes bytes = std::move(memory);
    bytes.refill(file.size);
    const ssize_t size = readInto(file.handle, bytes.bytes());
    if (size < 0)
        return {ReadStatus::unreadable, {}, errno};
    bytes.shrink(static_cast<std::size_t>(size));
    return {ReadStatus::ok, std::move(bytes), 0};
}

} // namespace vellumor
