#pragma once

#include <string>

namespace vellumor {

// Whether a path that somebody typed can be a config directory.
enum class FolderState { usable, notAbsolute, missing, notAFolder, unreadable };

} // namespace vellumor

// DiskPath: the two spellings of one path. The program's keys are in composed Unicode (NFC), while
// a name on a Linux disk is bytes and may be decomposed. Only names beyond ASCII cost a look at the
// disk.
namespace vellumor::DiskPath {

// `path` as it stands on disk: each name that does not exist as given is replaced by the entry of
// its folder with the same composed form, the first by byte order. Where nothing fits, the rest of
// the path is left as given.
[[nodiscard]] std::string spelled(const std::string& path);

[[nodiscard]] bool exists(const std::string& path);
[[nodiscard]] bool isFolder(const std::string& path);
// Whether it is an absolute path to a file that this user may run.
[[nodiscard]] bool isProgram(const std::string& path);
[[nodiscard]] FolderState folderState(const std::string& path);

} // namespace vellumor::DiskPath
