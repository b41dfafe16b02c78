#include "platform/linux/ChildLauncher.h"

#include "store/DiskPath.h"
#include "usage/ClaudeBinaryFinder.h"

#include <QSocketNotifier>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <coroutine>
#include <csignal>
#include <optional>
#include <string_view>
#include <tuple>
#include <utility>

extern "C" {
#include <sys/pidfd.h> // the header of glibc 2.36 says nothing of C++
}

namespace vellumor {

namespace {

// In the folders of `search`, of which relative ones do not count.
std::optional<std::string> find(const std::string& name, std::string_view search)
{
    while (!search.empty()) {
        const auto end = std::min(search.find(':'), search.size());
        const std::string path = std::string(search.substr(0, end)) + "/" + name;
        if (path.starts_with('/') && DiskPath::isProgram(path))
            return path;
        search.remove_prefix(std::min(end + 1, search.size()));
    }
    return std::nullopt;
}

std::vector<char*> pointersTo(std::vector<std::string>& texts)
{
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

// What is to be so in the child before it becomes the program.
class Preparation {
public:
    explicit Preparation(const std::string& folder)
    {
        sigset_t none;
        sigset_t all;
        ::sigemptyset(&none);
        ::sigfillset(&all);
        ::posix_spawnattr_init(&m_attributes);
        ::posix_spawnattr_setflags(&m_attributes, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK |
                                                      POSIX_SPAWN_SETSIGDEF);
        ::posix_spawnattr_setsigmask(&m_attributes, &none);
        ::posix_spawnattr_setsigdefault(&m_attributes, &all);
        ::posix_spawn_file_actions_init(&m_actions);
        for (const int file : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
            ::posix_spawn_file_actions_addopen(&m_actions, file, "/dev/null", O_RDWR, 0);
        ::posix_spawn_file_actions_addclosefrom_np(&m_actions, STDERR_FILENO + 1);
        ::posix_spawn_file_actions_addchdir_np(&m_actions, folder.c_str());
    }
    Preparation(const Preparation&) = delete;
    Preparation& operator=(const Preparation&) = delete;
    ~Preparation()
    {
        ::posix_spawn_file_actions_destroy(&m_actions);
        ::posix_spawnattr_destroy(&m_attributes);
    }

    [[nodiscard]] const posix_spawnattr_t* attributes() const { return &m_attributes; }
    [[nodiscard]] const posix_spawn_file_actions_t* actions() const { return &m_actions; }

private:
    posix_spawnattr_t m_attributes{};
    posix_spawn_file_actions_t m_actions{};
};

// A folder that is there, since nothing starts in one that is not.
std::string homeIn(const Environment& environment)
{
    const auto home = value(environment, "HOME");
    return home && ::access(home->c_str(), X_OK) == 0 ? *home : "/";
}

// Once it has ended, and not before: true when it did well.
bool takeEnd(int handle)
{
    siginfo_t end{};
    return ::waitid(P_PIDFD, static_cast<id_t>(handle), &end, WEXITED | WNOHANG) == 0 &&
           end.si_code == CLD_EXITED && end.si_status == 0;
}

} // namespace

// Awaited: goes on when the child has ended or its time is over, and tells whether it has ended.
class ChildLauncher::FirstMoments {
public:
    FirstMoments(Clock& clock, int handle)
        : m_clock(clock)
        , m_notifier(std::make_unique<QSocketNotifier>(handle, QSocketNotifier::Read))
    {
    }

    [[nodiscard]] bool await_ready() const noexcept { return false; }
    void await_suspend(std::coroutine_handle<> waiting)
    {
        m_alarm = m_clock.after(patience, [waiting] { waiting.resume(); });
        QObject::connect(m_notifier.get(), &QSocketNotifier::activated, [this, waiting] {
            m_notifier->setEnabled(false);
            m_hasEnded = true;
            // Not from within the notifier's own signal: who waits will destroy it.
            m_alarm = m_clock.after(std::chrono::milliseconds(0), [waiting] { waiting.resume(); });
        });
    }
    [[nodiscard]] bool await_resume() const noexcept { return m_hasEnded; }

private:
    Clock& m_clock;
    std::unique_ptr<QSocketNotifier> m_notifier;
    std::unique_ptr<Alarm> m_alarm;
    bool m_hasEnded = false;
};

ChildLauncher::ChildLauncher(Clock& clock, Worker& worker, Environment environment)
    : m_clock(clock)
    , m_worker(worker)
    , m_environment(childEnvironment(std::move(environment)))
{
}

ChildLauncher::~ChildLauncher() = default;

ChildLauncher::Child ChildLauncher::start(const Command& command, const Environment& environment)
{
    const auto program = find(command.front(), value(environment, "PATH").value_or(""));
    if (!program)
        return {};
    Command arguments = command;
    std::vector<std::string> assignments;
    for (const auto& [name, text] : environment)
        assignments.push_back(std::string(name).append("=").append(text));
    const Preparation preparation(homeIn(environment));
    pid_t pid = 0;
    if (::posix_spawn(&pid, program->c_str(), preparation.actions(), preparation.attributes(),
                      pointersTo(arguments).data(), pointersTo(assignments).data()) != 0)
        return {};
    return {true, FileHandle(::pidfd_open(pid, 0))};
}

Task<bool> ChildLauncher::launchFirst(std::vector<Command> commands)
{
    for (Command& command : commands) {
        const bool isLaunched = co_await launch(std::move(command));
        if (isLaunched)
            co_return true;
    }
    co_return false;
}

Task<bool> ChildLauncher::launch(Command command)
{
    auto job = [command = std::move(command), environment = m_environment] {
        return start(command, environment);
    };
    Child child = co_await m_worker.run(std::move(job));
    if (!child.isStarted || !child.handle.valid())
        co_return child.isStarted;
    const bool hasEnded = co_await FirstMoments(m_clock, child.handle.get());
    if (hasEnded)
        co_return takeEnd(child.handle.get());
    takeCareOf(std::move(child.handle));
    co_return true;
}

// Its end is taken notice of, whenever it comes: the system keeps it until then.
void ChildLauncher::takeCareOf(FileHandle handle)
{
    const int file = handle.get();
    auto notifier = std::make_unique<QSocketNotifier>(file, QSocketNotifier::Read);
    const auto place =
        m_running.insert(m_running.end(), Running{std::move(handle), std::move(notifier)});
    QObject::connect(place->notifier.get(), &QSocketNotifier::activated, [this, place, file] {
        std::ignore = takeEnd(file);
        place->notifier->setEnabled(false);
        place->notifier.release()->deleteLater(); // not within its own signal
        m_running.erase(place);
    });
}

} // namespace vellumor
