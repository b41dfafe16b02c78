#pragma once

#include "async/Task.h"
#include "base/Environment.h"

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

namespace vellumor {

// One child process: no terminal, nothing on its standard input, its errors thrown away.
struct ProcessRequest {
    std::string program; // absolute
    std::vector<std::string> arguments;
    Environment environment; // all of it
    std::string workingDirectory;
    std::chrono::milliseconds timeLimit{};
    std::size_t outputLimit = 0; // bytes of standard output to keep; 0: none is read
};

struct ProcessResult {
    static constexpr int notLaunched = -1;

    int status = notLaunched; // the exit status, or the number of the signal that ended it
    std::string output;       // what came before the child's end
    bool isOutputCut = false; // there was more than the limit
};

// Runs child processes. Main thread only, which waits for nothing but the start itself; any number
// may run at a time. Each is a process group of its own: what it has started in its group ends with
// it when its time is over, politely at first and two seconds later for certain. What outlives a
// child that ended in time is not waited for, even where it holds the child's output open.
class ProcessRunner {
public:
    virtual ~ProcessRunner() = default;
    [[nodiscard]] virtual Task<ProcessResult> run(ProcessRequest request) = 0;
};

} // namespace vellumor
