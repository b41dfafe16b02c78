#pragma once

#include "base/FileHandle.h"
#include "store/FileStore.h"

#include <optional>
#include <string>

namespace vellumor {

// A lock on a file that names the process holding it. The system frees it when that process ends,
// however it ends. It is an advisory record lock, since that kind tells who holds it.
class InstanceLock {
public:
    enum class Result {
        held,
        taken,
        unavailable
    }; // unavailable: the file cannot be made or locked

    // Creates nothing. `files` outlives the lock.
    InstanceLock(const FileStore& files, std::string path);

    // The process that holds the lock, if that is another one. Creates nothing.
    [[nodiscard]] std::optional<int> holder() const;

    // Takes the lock and writes the own process id into the file, mode 0600.
    [[nodiscard]] Result acquire();
    void release();

private:
    const FileStore& m_files;
    std::string m_path;
    FileHandle m_file; // open while held; closing any descriptor of the file would free the lock
};

} // namespace vellumor
