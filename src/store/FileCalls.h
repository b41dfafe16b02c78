#pragma once

#include <sys/types.h>

#include <cstddef>

namespace vellumor {

// The system calls by which a file comes to stand on disk, and goes. Tests hand in ones that fail
// at a chosen moment; each call behaves as its namesake of POSIX, errno included.
class FileCalls {
public:
    virtual ~FileCalls() = default;
    // A new file for writing that must not exist yet, close-on-exec.
    [[nodiscard]] virtual int create(const char* path, mode_t mode) const;
    [[nodiscard]] virtual int mkdir(const char* path, mode_t mode) const;
    [[nodiscard]] virtual ssize_t write(int file, const void* bytes, std::size_t count) const;
    [[nodiscard]] virtual int fsync(int file) const;
    [[nodiscard]] virtual int rename(const char* from, const char* to) const;
    [[nodiscard]] virtual int unlinkat(int folder, const char* name, int flags) const;
};

} // namespace vellumor
