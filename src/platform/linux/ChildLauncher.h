#pragma once

#include "async/Task.h"
#include "async/Worker.h"
#include "base/Clock.h"
#include "base/Environment.h"
#include "base/FileHandle.h"

#include <chrono>
#include <list>
#include <memory>
#include <string>
#include <vector>

class QSocketNotifier;

namespace vellumor {

// Starts programs for the user that go on by themselves, also when this one ends: each in a session
// of its own, in the user's home, with no standard input or output. They get the environment
// without this program's own variables. Main thread only; looking for a program and starting it is
// done on the worker.
class ChildLauncher {
public:
    // The name, which is looked for in PATH, and the arguments.
    using Command = std::vector<std::string>;

    // One that ends well within this time counts as launched, and so does one that still runs
    // then; one that has failed by then does not.
    static constexpr std::chrono::milliseconds patience{1500};

    // `clock` and `worker` outlive the launcher.
    ChildLauncher(Clock& clock, Worker& worker, Environment environment);
    ChildLauncher(const ChildLauncher&) = delete;
    ChildLauncher& operator=(const ChildLauncher&) = delete;
    ~ChildLauncher();

    // The first of `commands` that can be; false when none can. The launcher must not go meanwhile.
    [[nodiscard]] Task<bool> launchFirst(std::vector<Command> commands);

    // Children that were launched and have not ended.
    [[nodiscard]] std::size_t running() const { return m_running.size(); }

private:
    struct Child {
        bool isStarted = false;
        FileHandle handle; // readable once it has ended; none where the system has no such thing
    };
    struct Running {
        FileHandle handle;
        std::unique_ptr<QSocketNotifier> notifier;
    };
    class FirstMoments;

    [[nodiscard]] static Child start(const Command& command, const Environment& environment);
    [[nodiscard]] Task<bool> launch(Command command);
    void takeCareOf(FileHandle handle);

    Clock& m_clock;
    Worker& m_worker;
    Environment m_environment; // for the children
    std::list<Running> m_running;
};

} // namespace vellumor
