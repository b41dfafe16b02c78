#pragma once

#include "store/FileStore.h"

#include <optional>
#include <string>

namespace vellumor {

// The `claude` program that was found the last time. Knows no threads: one caller at a time. A file
// that cannot be read holds nothing; no failure is reported.
class PersistedClaudePath {
public:
    // `files` outlives it.
    PersistedClaudePath(const FileStore& files, std::string fileURL);

    [[nodiscard]] std::optional<std::string> read() const;
    // Writes unless the same path is noted already.
    void note(const std::string& path);

private:
    const FileStore& m_files;
    std::string m_fileURL;
};

} // namespace vellumor
