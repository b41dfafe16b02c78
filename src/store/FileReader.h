#pragma once

#include "base/SecretBytes.h"

#include <cstddef>
#include <string>

namespace vellumor {

// Larger files are not read: nothing that the program reads comes near it.
inline constexpr std::size_t maxFileSize = std::size_t{8} * 1024 * 1024;

enum class ReadStatus {
    ok,
    missing,    // there is no such file
    denied,     // it is there, and may not be read
    unreadable, // any other reason: not a regular file, over the limit, an input error
};

struct FileContents {
    ReadStatus status = ReadStatus::missing;
    std::string bytes; // empty unless ok
    int error = 0;     // errno where the system gave one, else 0
};

struct SecretFileContents {
    ReadStatus status = ReadStatus::missing;
    SecretBytes bytes;
    int error = 0;
};

// Reads a whole regular file. A folder, pipe, device or socket is unreadable, and never blocks the
// caller. A name in another Unicode composition than the one on disk finds its file.
[[nodiscard]] FileContents readFile(const std::string& path, std::size_t limit = maxFileSize);

// The same into guarded memory; no other copy of the bytes is left in the process. `memory` is
// taken for it when the file can be opened.
[[nodiscard]] SecretFileContents readSecretFile(const std::string& path, SecretBytes& memory);

} // namespace vellumor
