#include "platform/linux/SessionBus.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>

namespace vellumor::SessionBus {

std::string reachable(std::string_view address)
{
    std::string kept;
    while (!address.empty()) {
        const std::string_view entry = address.substr(0, address.find(';'));
        address.remove_prefix(std::min(entry.size() + 1, address.size()));
        if (entry.empty() || entry.starts_with("autolaunch:"))
            continue;
        kept += kept.empty() ? "" : ";";
        kept += entry;
    }
    return kept;
}

std::string address(const Environment& environment)
{
    if (const auto given = value(environment, "DBUS_SESSION_BUS_ADDRESS")) {
        const std::string kept = reachable(*given);
        return kept.empty() ? "disabled:" : kept;
    }
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
