#include "platform/linux/LoginShell.h"

#include "store/DiskPath.h"

#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <string_view>

namespace vellumor::LoginShell {

namespace {

constexpr std::array<std::string_view, 5> knownShells = {"zsh", "bash", "ksh", "dash", "sh"};

bool isUsable(const std::string& path)
{
    if (!path.starts_with('/'))
        return false;
    const std::string_view name = std::string_view(path).substr(path.rfind('/') + 1);
    return std::find(knownShells.begin(), knownShells.end(), name) != knownShells.end() &&
           DiskPath::isProgram(path);
}

std::string databaseEntry()
{
    std::array<char, 16384> buffer{};
    passwd entry{};
    passwd* found = nullptr;
    if (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) != 0 ||
        found == nullptr || found->pw_shell == nullptr)
        return {};
    return found->pw_shell;
}

} // namespace

std::string firstUsable(const std::vector<std::string>& shells)
{
    for (const std::string& shell : shells) {
        if (isUsable(shell))
            return shell;
    }
    for (const char* const shell : {"/bin/zsh", "/bin/bash"}) {
        if (isUsable(shell))
            return shell;
    }
    return "/bin/sh";
}

std::string path(const Environment& environment)
{
    return firstUsable({value(environment, "SHELL").value_or(""), databaseEntry()});
}

} // namespace vellumor::LoginShell
