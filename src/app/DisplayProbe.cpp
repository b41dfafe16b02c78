#include "app/DisplayProbe.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <xcb/xcb.h>

#include <algorithm>

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
    if (value(environment, "QT_QPA_PLATFORM"))
        return true;
    const auto wayland = value(environment, "WAYLAND_DISPLAY");
    if (wayland && answersWayland(environment, *wayland))
        return true;
    const auto x11 = value(environment, "DISPLAY");
    return x11 && answersX11(*x11);
}

} // namespace vellumor
