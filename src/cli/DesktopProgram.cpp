#include "cli/DesktopProgram.h"

#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

namespace vellumor::DesktopProgram {

std::string pathBeside(const std::string& front)
{
    return std::filesystem::path(front).parent_path().string() + "/" VELLUMOR_DESKTOP_FROM_FRONT;
}

int become(char** arguments)
{
    std::error_code error;
    const auto front = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error)
        return error.value();
    ::execv(pathBeside(front.string()).c_str(), arguments);
    return errno;
}

} // namespace vellumor::DesktopProgram
