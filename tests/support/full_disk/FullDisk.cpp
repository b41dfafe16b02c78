// full_disk: preloaded into a program, it lets the files below the folder that FULL_DISK_FOLDER
// names take nothing more while there is a file under the path in FULL_DISK_MARK. As on a disk that
// fills up, half of what is written first goes through; with "late" in the mark all of it does, and
// the disk says so when it is to be synced.

#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

enum class Disk { healthy, full, fullLate };

std::string_view variable(const char* name)
{
    const char* const found = std::getenv(name);
    return found == nullptr ? std::string_view() : std::string_view(found);
}

bool isBelowFolder(int descriptor)
{
    static const std::string folder = std::string(variable("FULL_DISK_FOLDER")) + "/";
    std::array<char, 4096> name{};
    const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
    const auto size = ::readlink(link.c_str(), name.data(), name.size());
    return size > 0 &&
           std::string_view(name.data(), static_cast<std::size_t>(size)).starts_with(folder);
}

Disk diskOf(int descriptor)
{
    static const std::string path(variable("FULL_DISK_MARK"));
    const int error = errno;
    const int mark = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    char first = '\0';
    const bool isLate = mark >= 0 && ::read(mark, &first, 1) == 1;
    if (mark >= 0)
        ::close(mark);
    const bool isFull = mark >= 0 && isBelowFolder(descriptor);
    errno = error;
    if (!isFull)
        return Disk::healthy;
    return isLate ? Disk::fullLate : Disk::full;
}

template <typename Function>
Function* original(const char* name)
{
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

// `put` writes so many of the bytes, which go to `offset` in the file.
template <typename Put>
ssize_t written(int descriptor, std::size_t count, off_t offset, Put put)
{
    if (diskOf(descriptor) != Disk::full)
        return put(count);
    if (offset == 0 && count > 1)
        return put(count / 2);
    errno = ENOSPC;
    return -1;
}

} // namespace

extern "C" ssize_t write(int descriptor, const void* bytes, std::size_t count)
{
    static auto* const next = original<decltype(write)>("write");
    const int error = errno;
    const off_t offset = ::lseek(descriptor, 0, SEEK_CUR); // fails where there is no such thing
    errno = error;
    return written(descriptor, count, offset,
                   [&](std::size_t some) { return next(descriptor, bytes, some); });
}

extern "C" ssize_t pwrite(int descriptor, const void* bytes, std::size_t count, off_t offset)
{
    static auto* const next = original<decltype(pwrite)>("pwrite");
    return written(descriptor, count, offset,
                   [&](std::size_t some) { return next(descriptor, bytes, some, offset); });
}

extern "C" int fsync(int descriptor)
{
    static auto* const next = original<decltype(fsync)>("fsync");
    if (diskOf(descriptor) == Disk::healthy)
        return next(descriptor);
    errno = ENOSPC;
    return -1;
}
