#pragma once

#include "platform/ProcessRunner.h"
#include "support/TempFolder.h"

#include <QCoreApplication>
#include <QDeadlineTimer>

#include <csignal>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

namespace vellumor::test {

// For a shell that runs `script` in `folder`, and has more time than it needs.
inline ProcessRequest shellRequest(const TempFolder& folder, const std::string& script)
{
    ProcessRequest request;
    request.program = "/bin/sh";
    request.arguments = {"-c", script};
    request.environment = {{"PATH", "/usr/bin:/bin"}};
    request.workingDirectory = folder.path();
    request.timeLimit = std::chrono::seconds(60);
    request.outputLimit = 4096;
    return request;
}

// Lets the event loop turn until `done`; false when that takes more than 20 seconds.
inline bool turnLoopUntil(const std::function<bool()>& done)
{
    const QDeadlineTimer limit(20000);
    while (!done()) {
        if (limit.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 5);
    }
    return true;
}

// The process ids in a file, one a line; none while the last line is not whole.
inline std::vector<pid_t> pidsIn(const std::string& file)
{
    std::vector<pid_t> pids;
    const std::string text = contentsOf(file);
    std::istringstream lines(text);
    if (text.ends_with('\n'))
        for (pid_t pid = 0; lines >> pid;)
            pids.push_back(pid);
    return pids;
}

// Ended, whether or not its parent has taken notice.
inline bool isGone(pid_t pid)
{
    const std::string status = contentsOf("/proc/" + std::to_string(pid) + "/stat");
    const auto name = status.rfind(')');
    return name == std::string::npos || status.substr(name + 2, 1) == "Z" ||
           status.substr(name + 2, 1) == "X";
}

inline bool areGone(const std::vector<pid_t>& pids)
{
    for (const pid_t pid : pids) {
        if (!isGone(pid))
            return false;
    }
    return true;
}

} // namespace vellumor::test
