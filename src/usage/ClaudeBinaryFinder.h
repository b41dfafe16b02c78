#pragma once

#include "async/Task.h"
#include "async/Worker.h"
#include "base/Environment.h"
#include "platform/ProcessRunner.h"
#include "usage/PersistedClaudePath.h"

#include <optional>
#include <string>

namespace vellumor {

// Finds the `claude` program of this user. Main thread only; the disk is looked at by the worker,
// and the login shell is waited for without holding anybody up.
class ClaudeBinaryFinder {
public:
    struct Setting {
        Environment environment; // of this process
        std::string home;
        std::string loginShell;
        std::string workingDirectory; // of the shell
    };

    // Everything borrowed outlives the finder.
    ClaudeBinaryFinder(ProcessRunner& processes, Worker& worker, PersistedClaudePath& persisted,
                       Setting setting);

    // The first candidate that can be run; nothing when none can. Writes nothing.
    [[nodiscard]] Task<std::optional<std::string>> find(std::optional<std::string> preference);
    // The same, and notes it for the next start unless it is the preference.
    [[nodiscard]] Task<std::optional<std::string>>
    resolveClaudeBinary(std::optional<std::string> preference);

private:
    [[nodiscard]] Task<std::optional<std::string>> loginShellWhich();

    ProcessRunner& m_processes;
    Worker& m_worker;
    PersistedClaudePath& m_persisted; // touched by the worker alone
    Setting m_setting;
};

// What a child of this program inherits: all but the variables that are meant for the program.
[[nodiscard]] Environment childEnvironment(Environment environment);

} // namespace vellumor
