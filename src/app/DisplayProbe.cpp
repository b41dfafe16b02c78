#include "app/DisplayProbe.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <xcb/xcb.h>

#include <algorithm>
#include <sstream>
#include <string_view>

namespace vellumor {

namespace {

bool answersX11(const std::string& display)
{
    xcb_connection_t* const connection = ::xcb_connect(display.c_str(), nullptr);
    const bool answers = ::xcb_connection_has_error(connection) == 0;
    ::xcb_disconnect(connection);
    return answers;
}

bool answersWayland(const Environment& environment, const std::string& display)
{
    const std::string path =
        display.starts_with('/')
            ? display
            : value(environment, "XDG_RUNTIME_DIR").value_or("") + "/" + display;
    sockaddr_un address{};
    if (path.size() >= sizeof address.sun_path)
        return false;
    address.sun_family = AF_UNIX;
    std::ranges::copy(path, static_cast<char*>(address.sun_path));
    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const bool answers =
        ::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    ::close(socket);
    return answers;
}

} // namespace

bool isDisplayReachable(const Environment& environment)
{
    const auto wayland = value(environment, "WAYLAND_DISPLAY");
    const auto x11 = value(environment, "DISPLAY");
    const auto isThere = [&](std::string_view platform) {
        if (platform.starts_with("wayland"))
            return wayland && answersWayland(environment, *wayland);
        if (platform.starts_with("xcb"))
            return x11 && answersX11(*x11);
        return !platform.empty();
    };
    std::string platforms = value(environment, "QT_QPA_PLATFORM").value_or("wayland;xcb");
    std::ranges::replace(platforms, ';', '\n');
    std::istringstream names(platforms);
    for (std::string name; std::getline(names, name);) {
        if (isThere(name))
            return true;
    }
    return false;
}

} // namespace vellumor
