#include "store/DataRemover.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <memory>

namespace vellumor::DataRemover {

namespace {

constexpr int mostAttempts = 5; // at a folder that somebody else writes into
constexpr int mostLevels = 100; // each holds a file descriptor; ours are three

struct CloseFolder {
    void operator()(DIR* folder) const { ::closedir(folder); }
};
using OpenFolder = std::unique_ptr<DIR, CloseFolder>;

// Not through a link, not even one that has come just now.
OpenFolder openFolder(int parent, const std::string& name)
{
    const int file =
        ::openat(parent, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (file < 0)
        return nullptr;
    OpenFolder folder(::fdopendir(file));
    if (!folder)
        ::close(file);
    return folder;
}

std::vector<std::string> namesIn(DIR* folder)
{
    std::vector<std::string> names;
    while (const dirent* entry = ::readdir(folder)) {
        const std::string_view name(entry->d_name);
        if (name != "." && name != "..")
            names.emplace_back(name);
    }
    return names;
}

class Removal {
public:
    explicit Removal(const FileCalls& calls)
        : m_calls(calls)
    {
    }

    // True when nothing is there any more.
    [[nodiscard]] bool remove(int parent, const std::string& name, int level) const
    {
        struct stat status {};
        if (::fstatat(parent, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0)
            return errno == ENOENT;
        return S_ISDIR(status.st_mode) ? removeFolder(parent, name, level)
                                       : unlink(parent, name, 0) == 0;
    }

private:
    // 0 also for what was gone by then, else errno.
    [[nodiscard]] int unlink(int parent, const std::string& name, int flags) const
    {
        if (m_calls.unlinkat(parent, name.c_str(), flags) == 0 || errno == ENOENT)
            return 0;
        return errno;
    }

    [[nodiscard]] bool removeFolder(int parent, const std::string& name, int level) const
    {
        for (int attempt = 0; attempt < mostAttempts; ++attempt) {
            if (!removeContents(parent, name, level))
                return false;
            const int error = unlink(parent, name, AT_REMOVEDIR);
            if (error != ENOTEMPTY && error != EEXIST)
                return error == 0;
        }
        return false;
    }

    [[nodiscard]] bool removeContents(int parent, const std::string& name, int level) const
    {
        if (level >= mostLevels)
            return false;
        const OpenFolder folder = openFolder(parent, name);
        if (!folder)
            return errno == ENOENT;
        bool isAllGone = true;
        for (const std::string& entry : namesIn(folder.get()))
            isAllGone = remove(::dirfd(folder.get()), entry, level + 1) && isAllGone;
        return isAllGone;
    }

    const FileCalls& m_calls;
};

Outcome outcomeOf(const Target& target, const FileCalls& calls)
{
    struct stat status {};
    if (::lstat(target.url.c_str(), &status) != 0)
        return errno == ENOENT || errno == ENOTDIR ? Outcome::absent : Outcome::failed;
    return Removal(calls).remove(AT_FDCWD, target.url, 0) ? Outcome::removed : Outcome::failed;
}

} // namespace

std::vector<Target> targets(const std::string& applicationSupport)
{
    return {{"Vellumor", applicationSupport + "/Vellumor"},
            {"Quorle", applicationSupport + "/Quorle"}};
}

std::vector<Result> execute(const std::vector<Target>& targets)
{
    return execute(targets, FileCalls());
}

std::vector<Result> execute(const std::vector<Target>& targets, const FileCalls& calls)
{
    std::vector<Result> results;
    results.reserve(targets.size());
    for (const Target& target : targets)
        results.push_back({target, outcomeOf(target, calls)});
    return results;
}

} // namespace vellumor::DataRemover
