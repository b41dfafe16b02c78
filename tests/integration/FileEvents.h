#pragma once

#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

namespace vellumor::test {

// What happens to the files in some folders from now on, as the kernel tells it.
class FileEvents {
public:
    struct Seen {
        std::vector<std::string> opens;   // one path for each time that a file was opened
        std::vector<std::string> changes; // likewise for what was made, written, moved or removed
    };

    explicit FileEvents(const std::vector<std::string>& folders)
        : m_queue(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK))
    {
        for (const std::string& folder : folders) {
            const int watch = ::inotify_add_watch(m_queue, folder.c_str(), IN_OPEN | changeMask);
            if (watch < 0)
                throw std::runtime_error("cannot watch " + folder);
            m_folders[watch] = folder;
        }
    }
    FileEvents(const FileEvents&) = delete;
    FileEvents& operator=(const FileEvents&) = delete;
    ~FileEvents() { ::close(m_queue); }

    // All of them up to now.
    [[nodiscard]] Seen take() const
    {
        Seen seen;
        alignas(inotify_event) std::array<char, 16384> buffer{};
        for (ssize_t size = 0; (size = ::read(m_queue, buffer.data(), buffer.size())) > 0;) {
            for (ssize_t at = 0; at < size;) {
                const auto* event = reinterpret_cast<const inotify_event*>(buffer.data() + at);
                note(*event, seen);
                at += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
            }
        }
        return seen;
    }

private:
    static constexpr unsigned changeMask =
        IN_CREATE | IN_MODIFY | IN_ATTRIB | IN_MOVED_FROM | IN_MOVED_TO | IN_DELETE;

    void note(const inotify_event& event, Seen& seen) const
    {
        if ((event.mask & IN_ISDIR) != 0)
            return;
        const std::string path = m_folders.at(event.wd) + "/" + (event.len > 0 ? event.name : "");
        if ((event.mask & IN_OPEN) != 0)
            seen.opens.push_back(path);
        if ((event.mask & changeMask) != 0)
            seen.changes.push_back(path);
    }

    int m_queue;
    std::map<int, std::string> m_folders;
};

} // namespace vellumor::test
