#pragma once

#include "store/FileCalls.h"

#include <cerrno>
#include <filesystem>
#include <functional>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace vellumor::test {

// The real calls, of any thread. Every file that is about to be written is noted by its name, and
// none can be made, or filled, as long as the disk refuses.
class WatchedFileCalls final : public FileCalls {
public:
    enum class Disk { healthy, full, readOnly };

    void setDisk(Disk disk)
    {
        const std::scoped_lock lock(m_mutex);
        m_disk = disk;
    }
    // Called with the name of each file before it is written, by the thread that does so.
    void onWrite(std::function<void(const std::string& name)> then)
    {
        const std::scoped_lock lock(m_mutex);
        m_onWrite = std::move(then);
    }
    // The names of what was written or was to be, in order.
    [[nodiscard]] std::vector<std::string> written() const
    {
        const std::scoped_lock lock(m_mutex);
        return m_written;
    }
    void forget()
    {
        const std::scoped_lock lock(m_mutex);
        m_written.clear();
    }

    [[nodiscard]] int create(const char* path, mode_t mode) const override
    {
        const std::scoped_lock lock(m_mutex);
        // The temporary file of "a/b.json" is "a/.b.json.PID.UUID.tmp"; two folders have an
        // accounts.json.
        const std::filesystem::path file(path);
        const std::string hidden = file.filename().string();
        m_written.push_back(file.parent_path().filename().string() + "/" +
                            hidden.substr(1, hidden.find(".json") + 4));
        if (m_onWrite)
            m_onWrite(m_written.back());
        if (m_disk == Disk::readOnly) {
            errno = EROFS;
            return -1;
        }
        return FileCalls::create(path, mode);
    }
    [[nodiscard]] ssize_t write(int file, const void* bytes, std::size_t count) const override
    {
        const std::scoped_lock lock(m_mutex);
        if (m_disk == Disk::full) {
            errno = ENOSPC;
            return -1;
        }
        return FileCalls::write(file, bytes, count);
    }

private:
    mutable std::mutex m_mutex;
    Disk m_disk = Disk::healthy;
    std::function<void(const std::string&)> m_onWrite;
    mutable std::vector<std::string> m_written; // the calls of the seam are const
};

} // namespace vellumor::test
