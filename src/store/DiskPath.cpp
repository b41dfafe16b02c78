#include "store/DiskPath.h"

#include "base/Text.h"

#include <cerrno>

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <optional>

namespace vellumor::DiskPath {

namespace {

bool isAscii(const std::string& text)
{
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

bool present(const std::string& path)
{
    struct stat status {};
    return ::lstat(path.c_str(), &status) == 0;
}

std::optional<std::string> entryComposedAs(const std::string& folder, const std::string& name)
{
    const std::string wanted = Text::composed(name);
    std::optional<std::string> found;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        std::string candidate = entry->path().filename().string();
        if (Text::composed(candidate) == wanted && (!found || candidate < *found))
            found = std::move(candidate);
    }
    return found;
}

} // namespace

std::string spelled(const std::string& path)
{
    if (isAscii(path) || present(path))
        return path;
    std::filesystem::path result;
    for (const std::filesystem::path& part : std::filesystem::path(path)) {
        const std::string name = part.string();
        if (isAscii(name) || present((result / part).string()))
            result /= part;
        else
            result /= entryComposedAs(result.empty() ? "." : result.string(), name).value_or(name);
    }
    return result.string();
}

bool exists(const std::string& path)
{
    struct stat status {};
    return ::stat(spelled(path).c_str(), &status) == 0;
}

bool isProgram(const std::string& path)
{
    struct stat status {};
    const bool isOnePath = path.starts_with('/') && path.find('\0') == std::string::npos;
    return isOnePath && ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
           ::access(path.c_str(), X_OK) == 0;
}

bool isFolder(const std::string& path)
{
    struct stat status {};
    return ::stat(spelled(path).c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

FolderState folderState(const std::string& path)
{
    if (path.empty() || path.front() != '/')
        return FolderState::notAbsolute;
    const std::string onDisk = spelled(path);
    struct stat status {};
    if (::stat(onDisk.c_str(), &status) != 0)
        return errno == EACCES ? FolderState::unreadable : FolderState::missing;
    if (!S_ISDIR(status.st_mode))
        return FolderState::notAFolder;
    return ::access(onDisk.c_str(), R_OK | X_OK) == 0 ? FolderState::usable
                                                      : FolderState::unreadable;
}

} // namespace vellumor::DiskPath
