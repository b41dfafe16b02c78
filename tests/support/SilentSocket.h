#pragma once

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <stdexcept>
#include <string>

namespace vellumor::test {

// A socket to which everybody can connect, and where nobody ever says a word.
class SilentSocket {
public:
    // Makes the file `path`.
    explicit SilentSocket(const std::string& path)
        : m_path(path)
        , m_socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        if (::bind(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
            ::listen(m_socket, 8) != 0)
            throw std::runtime_error("nothing can listen at " + path);
    }
    SilentSocket(const SilentSocket&) = delete;
    SilentSocket& operator=(const SilentSocket&) = delete;
    ~SilentSocket() { close(); }

    // Whoever connects from now on is refused; the file stays.
    void close()
    {
        if (m_socket >= 0)
            ::close(m_socket);
        m_socket = -1;
    }
    // As the address of a bus.
    [[nodiscard]] std::string busAddress() const { return "unix:path=" + m_path; }

private:
    std::string m_path;
    int m_socket;
};

} // namespace vellumor::test
