#include "support/private_bus/ChildProcess.h"

#include <fmt/format.h>

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>

namespace vellumor::test {

namespace {

int checked(int result, const char* what)
{
    if (result < 0)
        throw std::system_error(errno, std::generic_category(), what);
    return result;
}

// A file that has no name, at its start.
int anonymousFile(const std::string& bytes)
{
    const int file = checked(::memfd_create("input", MFD_CLOEXEC), "memfd_create");
    if (::write(file, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size()))
        throw std::runtime_error("the input of a child process cannot be kept");
    ::lseek(file, 0, SEEK_SET);
    return file;
}

std::vector<char*> pointersTo(std::vector<std::string>& texts)
{
    std::vector<char*> pointers;
    for (std::string& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

// Between fork and exec: system calls alone.
[[noreturn]] void becomeProgram(pid_t parent, int input, int output, char* const* arguments,
                                char* const* environment)
{
    ::setpgid(0, 0);
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() == parent && ::dup2(input, STDIN_FILENO) >= 0 &&
        ::dup2(output, STDOUT_FILENO) >= 0 && ::dup2(output, STDERR_FILENO) >= 0)
        ::execvpe(arguments[0], arguments, environment);
    ::_exit(127);
}

int exitStatus(int status)
{
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

} // namespace

ChildProcess::ChildProcess(const Command& command)
{
    auto arguments = command.arguments;
    std::vector<std::string> environment;
    for (const auto& [name, value] : command.environment)
        environment.push_back(name + "=" + value);
    const auto argumentPointers = pointersTo(arguments);
    const auto environmentPointers = pointersTo(environment);
    const int input = anonymousFile(command.input);
    const int output =
        checked(::open(command.outputFile.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600),
                command.outputFile.c_str());
    const pid_t parent = ::getpid();
    m_pid = checked(::fork(), "fork");
    if (m_pid == 0)
        becomeProgram(parent, input, output, argumentPointers.data(), environmentPointers.data());
    ::setpgid(m_pid, m_pid); // whoever of the two comes first
    ::close(input);
    ::close(output);
    m_pidFd = checked(static_cast<int>(::syscall(SYS_pidfd_open, m_pid, 0)), "pidfd_open");
}

ChildProcess::~ChildProcess()
{
    end();
    ::close(m_pidFd);
}

std::optional<int> ChildProcess::wait(std::chrono::milliseconds timeout)
{
    if (m_status)
        return m_status;
    pollfd ended{m_pidFd, POLLIN, 0};
    if (::poll(&ended, 1, static_cast<int>(timeout.count())) != 1)
        return std::nullopt;
    int status = 0;
    ::waitpid(m_pid, &status, 0);
    m_status = exitStatus(status);
    return m_status;
}

void ChildProcess::end()
{
    if (m_status)
        return;
    ::kill(m_pid, SIGTERM);
    ::kill(m_pid, SIGCONT); // one that was stopped hears nothing
    pollfd ended{m_pidFd, POLLIN, 0};
    ::poll(&ended, 1, 3000);
    ::kill(-m_pid, SIGKILL); // the group still has its number: its leader was not waited for
    (void)wait(std::chrono::milliseconds(-1));
}

std::string runToEnd(const ChildProcess::Command& command)
{
    const auto written = [&] {
        std::ifstream file(command.outputFile, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(file), {});
    };
    const auto before = written().size();
    ChildProcess process(command);
    const auto status = process.wait(std::chrono::seconds(20));
    std::string output = written().substr(before);
    if (status != 0)
        throw std::runtime_error(fmt::format("{}: status {}: {}", command.arguments.front(),
                                             status ? std::to_string(*status) : "none", output));
    return output;
}

} // namespace vellumor::test
