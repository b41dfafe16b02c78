#include "store/FileCalls.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>

namespace vellumor {

int FileCalls::create(const char* path, mode_t mode) const
{
    return ::open(path, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, mode);
}

int FileCalls::mkdir(const char* path, mode_t mode) const
{
    return ::mkdir(path, mode);
}

ssize_t FileCalls::write(int file, const void* bytes, std::size_t count) const
{
    return ::write(file, bytes, count);
}

int FileCalls::fsync(int file) const
{
    return ::fsync(file);
}

int FileCalls::rename(const char* from, const char* to) const
{
    return ::rename(from, to);
}

int FileCalls::unlinkat(int folder, const char* name, int flags) const
{
    return ::unlinkat(folder, name, flags);
}

} // namespace vellumor
