#pragma once

#include "async/Task.h"
#include "async/Worker.h"
#include "base/Environment.h"
#include "platform/ProcessRunner.h"
#include "store/FileStore.h"

#include <string>

namespace vellumor {

// Runs Claude Code's own /usage command through the user's login shell, whose search path it needs.
// Main thread only.
class HeadlessUsage {
public:
    struct Setting {
        Environment environment; // of this process
        std::string home;
        std::string loginShell;
    };

    // Everything borrowed outlives it.
    HeadlessUsage(ProcessRunner& processes, Worker& worker, const FileStore& files,
                  Setting setting);

    // The exit status; -1 when the shell could not be started. Makes `workDir` if it is missing.
    // Ends the shell after 120 seconds.
    [[nodiscard]] Task<int> spawnUsage(std::string binary, std::string configDir,
                                       std::string workDir);

private:
    ProcessRunner& m_processes;
    Worker& m_worker;
    const FileStore& m_files;
    Setting m_setting;
};

} // namespace vellumor
