#pragma once

#include "base/Environment.h"

#include <sys/types.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace vellumor::test {

// A program that is started at once and ended with this object at the latest; it also ends when the
// test dies. It leads a process group of its own, which is ended as a whole.
class ChildProcess {
public:
    struct Command {
        std::vector<std::string>
            arguments; // the program first, as a path or to be found in the environment's PATH
        Environment environment; // all of it: nothing is inherited
        std::string input;       // its standard input
        std::string outputFile;  // where standard output and error are appended
    };

    // Throws std::runtime_error when it cannot be started.
    explicit ChildProcess(const Command& command);
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    ~ChildProcess();

    // The exit status; 128 and the number of the signal that ended it; nothing when it still runs
    // after `timeout`.
    [[nodiscard]] std::optional<int> wait(std::chrono::milliseconds timeout);
    // Ends it: politely first, then not.
    void end();

    [[nodiscard]] pid_t pid() const { return m_pid; }

private:
    pid_t m_pid = -1;
    int m_pidFd = -1; // becomes readable when it ends
    std::optional<int> m_status;
};

// Runs it to its end; throws std::runtime_error, with what it wrote, when that takes more than 20
// seconds or the status is not 0. Gives what it wrote.
std::string runToEnd(const ChildProcess::Command& command);

} // namespace vellumor::test
