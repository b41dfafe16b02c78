#include "support/private_bus/PrivateBus.h"

#include <fmt/format.h>

#include <signal.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <utility>

namespace vellumor::test {

namespace fs = std::filesystem;

namespace {

constexpr const char* configuration = R"(<!DOCTYPE busconfig PUBLIC
 "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:path={0}/bus</listen>
  <auth>EXTERNAL</auth>
  <servicedir>{0}/services</servicedir>
  {1}
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
)";

void put(const std::string& path, const std::string& text)
{
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << text;
    if (!file.flush())
        throw std::runtime_error("cannot write " + path);
}

Environment environmentIn(const std::string& folder, const std::string& address)
{
    return {{"PATH", "/usr/bin:/bin"},
            {"LC_ALL", "C.UTF-8"},
            {"HOME", folder + "/home"},
            {"XDG_CONFIG_HOME", folder + "/home/.config"},
            {"XDG_DATA_HOME", folder + "/home/.local/share"},
            {"XDG_CACHE_HOME", folder + "/home/.cache"},
            {"XDG_RUNTIME_DIR", folder + "/run"},
            {"DBUS_SESSION_BUS_ADDRESS", address}};
}

bool listens(const std::string& path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const bool connected =
        ::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    ::close(socket);
    return connected;
}

} // namespace

PrivateBus::PrivateBus(const std::string& folder)
    : PrivateBus(folder, Options{})
{
}

PrivateBus::PrivateBus(const std::string& folder, const Options& options)
    : m_folder(folder)
    , m_address("unix:path=" + folder + "/bus")
    , m_environment(environmentIn(folder, m_address))
{
    for (const auto& [name, value] : options.environment)
        m_environment.insert_or_assign(name, value);
    for (const char* name : {"services", "home/.config", "home/.local/share", "home/.cache", "run"})
        fs::create_directories(file(name));
    fs::permissions(file("run"), fs::perms::owner_all);
    for (const auto& [name, program] : options.activatable)
        put(file("services/" + name + ".service"),
            fmt::format("[D-BUS Service]\nName={}\nExec={}\n", name, program));
    const bool system = options.services == Services::system;
    put(file("bus.conf"),
        fmt::format(configuration, folder, system ? "<standard_session_servicedirs/>" : ""));
    m_daemon =
        std::make_unique<ChildProcess>(command({"dbus-daemon", "--config-file=" + file("bus.conf"),
                                                "--nofork", "--nopidfile", "--nosyslog"},
                                               "bus.log"));
    while (!listens(file("bus"))) {
        if (m_daemon->wait(std::chrono::milliseconds(5)))
            throw std::runtime_error("the private bus has ended; see " + file("bus.log"));
    }
}

void PrivateBus::waitFor(const std::string& name) const
{
    runToEnd(command({"gdbus", "wait", "--session", "--timeout", "15", name}, "wait.log"));
}

std::string PrivateBus::call(const std::string& destination, const std::string& path,
                             const std::string& member,
                             const std::vector<std::string>& arguments) const
{
    std::vector<std::string> words{
        "dbus-send", "--session", "--print-reply", "--dest=" + destination, path, member};
    words.insert(words.end(), arguments.begin(), arguments.end());
    return runToEnd(command(std::move(words), "calls.log"));
}

void PrivateBus::kill() const
{
    ::kill(m_daemon->pid(), SIGKILL);
}

void PrivateBus::freeze() const
{
    ::kill(m_daemon->pid(), SIGSTOP);
}

void PrivateBus::thaw() const
{
    ::kill(m_daemon->pid(), SIGCONT);
}

ChildProcess::Command PrivateBus::command(std::vector<std::string> arguments,
                                          const std::string& logName) const
{
    return {std::move(arguments), m_environment, {}, file(logName)};
}

} // namespace vellumor::test
