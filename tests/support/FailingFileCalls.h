#pragma once

#include "store/FileCalls.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace vellumor::test {

// The real calls, recorded in order. One chosen call of a kind fails instead of being made.
class FailingFileCalls final : public FileCalls {
public:
    enum class Call { none, create, write, fsync, rename, unlink };

    // Of the calls of this kind the n-th from now, counted from 1, fails with `error`.
    void failNext(Call call, int nth, int error)
    {
        m_failing = call;
        m_left = nth;
        m_error = error;
    }
    // No write takes more than `most` bytes.
    void limitWrites(std::size_t most) { m_mostBytes = most; }
    // Called with the path of each file as soon as it was made.
    void onCreated(std::function<void(const std::string&)> then) { m_onCreated = std::move(then); }

    // Called with the name of each entry that is about to be removed.
    void beforeUnlink(std::function<void(const std::string&)> then)
    {
        m_beforeUnlink = std::move(then);
    }

    // "create", "write", "fsync file", "fsync folder", "rename", "unlink": what was asked, failed
    // calls too.
    [[nodiscard]] const std::vector<std::string>& log() const { return m_log; }
    // The paths that were to be created.
    [[nodiscard]] const std::vector<std::string>& created() const { return m_created; }

    [[nodiscard]] int create(const char* path, mode_t mode) const override
    {
        m_created.emplace_back(path);
        if (isFailing(Call::create, "create"))
            return -1;
        const int file = FileCalls::create(path, mode);
        if (m_onCreated)
            m_onCreated(path);
        return file;
    }
    [[nodiscard]] ssize_t write(int file, const void* bytes, std::size_t count) const override
    {
        if (isFailing(Call::write, "write"))
            return -1;
        return FileCalls::write(file, bytes, std::min(count, m_mostBytes));
    }
    [[nodiscard]] int fsync(int file) const override
    {
        struct stat status {};
        const bool isFolder = ::fstat(file, &status) == 0 && S_ISDIR(status.st_mode);
        if (isFailing(Call::fsync, isFolder ? "fsync folder" : "fsync file"))
            return -1;
        return FileCalls::fsync(file);
    }
    [[nodiscard]] int rename(const char* from, const char* to) const override
    {
        if (isFailing(Call::rename, "rename"))
            return -1;
        return FileCalls::rename(from, to);
    }
    [[nodiscard]] int unlinkat(int folder, const char* name, int flags) const override
    {
        if (m_beforeUnlink)
            m_beforeUnlink(name);
        if (isFailing(Call::unlink, "unlink"))
            return -1;
        return FileCalls::unlinkat(folder, name, flags);
    }

private:
    [[nodiscard]] bool isFailing(Call call, const char* name) const
    {
        m_log.emplace_back(name);
        if (call != m_failing || --m_left != 0)
            return false;
        errno = m_error;
        return true;
    }

    Call m_failing = Call::none;
    int m_error = 0;
    std::size_t m_mostBytes = SIZE_MAX;
    std::function<void(const std::string&)> m_onCreated;
    std::function<void(const std::string&)> m_beforeUnlink;
    mutable int m_left = 0; // the calls of the seam are const
    mutable std::vector<std::string> m_log;
    mutable std::vector<std::string> m_created;
};

} // namespace vellumor::test
