#include "platform/linux/SessionBus.h"

#include <sys/stat.h>

#include <cstdlib>

namespace vellumor::SessionBus {

std::string address(const Environment& environment)
{
    if (const auto given = value(environment, "DBUS_SESSION_BUS_ADDRESS"))
        return *given;
    if (const auto folder = value(environment, "XDG_RUNTIME_DIR")) {
        const std::string path = *folder + "/bus";
        struct stat status {};
        if (::stat(path.c_str(), &status) == 0 && S_ISSOCK(status.st_mode))
            return "unix:path=" + path;
    }
    return "disabled:";
}

void pinAddress(const Environment& environment)
{
    ::setenv("DBUS_SESSION_BUS_ADDRESS", address(environment).c_str(), 1);
}

} // namespace vellumor::SessionBus
