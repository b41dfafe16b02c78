#include "store/Folders.h"

#include "base/Text.h"

#include <pwd.h>
#include <unistd.h>

#include <optional>
#include <vector>

namespace vellumor {

namespace {

std::string withoutClosingSlash(std::string path)
{
    while (path.size() > 1 && path.back() == '/')
        path.pop_back();
    return path;
}

std::optional<std::string> absolute(const Environment& environment, std::string_view name)
{
    auto path = value(environment, name);
    if (!path || path->front() != '/')
        return std::nullopt;
    return withoutClosingSlash(*std::move(path));
}

std::string homeOfUser()
{
    std::vector<char> buffer(16384);
    passwd entry{};
    passwd* found = nullptr;
    if (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 &&
        found != nullptr && found->pw_dir != nullptr && found->pw_dir[0] == '/')
        return withoutClosingSlash(found->pw_dir);
    return "/";
}

} // namespace

Folders Folders::fromEnvironment(const Environment& environment)
{
    Folders folders;
    const std::string home = absolute(environment, "HOME").value_or(homeOfUser());
    folders.home = Text::composed(home);
    // Files are made below these, so they keep the spelling of the disk.
    folders.data = absolute(environment, "XDG_DATA_HOME").value_or(home + "/.local/share");
    folders.config = absolute(environment, "XDG_CONFIG_HOME").value_or(home + "/.config");
    return folders;
}

} // namespace vellumor
