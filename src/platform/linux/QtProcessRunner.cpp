#include "platform/linux/QtProcessRunner.h"

#include <QProcess>

#include <linux/close_range.h>
#include <sys/types.h>
#include <unistd.h>

#include <algorithm>
#include <coroutine>
#include <csignal>
#include <memory>
#include <vector>

namespace vellumor {

namespace {

constexpr std::chrono::milliseconds graceBeforeKill{2000};
constexpr std::chrono::milliseconds groupCheck{50}; // between two looks at a group that is ending

// Texts as the system takes them: their bytes, which need be no Unicode, and a null pointer behind
// the last.
class TextArray {
public:
    explicit TextArray(std::vector<std::string> texts)
        : m_texts(std::move(texts))
    {
        for (std::string& text : m_texts)
            m_pointers.push_back(text.data());
        m_pointers.push_back(nullptr);
    }
    TextArray(const TextArray&) = delete;
    TextArray& operator=(const TextArray&) = delete;

    [[nodiscard]] char* const* get() const { return m_pointers.data(); }

private:
    std::vector<std::string> m_texts;
    std::vector<char*> m_pointers;
};

std::vector<std::string> commandLine(const ProcessRequest& request)
{
    std::vector<std::string> texts = {request.program};
    texts.insert(texts.end(), request.arguments.begin(), request.arguments.end());
    return texts;
}

std::vector<std::string> assignments(const Environment& environment)
{
    std::vector<std::string> texts;
    for (const auto& [name, value] : environment)
        texts.push_back(std::string(name).append("=").append(value));
    return texts;
}

// One child from its start to its end.
class Run {
public:
    Run(Clock& clock, const ProcessRequest& request)
        : m_clock(clock)
        , m_request(request)
        , m_arguments(commandLine(request))
        , m_environment(assignments(request.environment))
    {
        // Qt runs this one where becomeProgram() comes back, and tells that it cannot be run.
        m_process.setProgram("/");
        m_process.setStandardInputFile(QProcess::nullDevice());
        m_process.setStandardErrorFile(QProcess::nullDevice());
        if (request.outputLimit == 0)
            m_process.setStandardOutputFile(QProcess::nullDevice());
        m_process.setChildProcessModifier([this] { becomeProgram(); });
    }

    // Resumes `waiting` when all is over.
    void start(std::coroutine_handle<> waiting)
    {
        m_waiting = waiting;
        QObject::connect(&m_process, &QProcess::readyReadStandardOutput, [this] { keepOutput(); });
        QObject::connect(&m_process, &QProcess::finished, [this] {
            keepOutput(); // all that was written before the end has come by now
            end(m_process.exitCode());
        });
        QObject::connect(&m_process, &QProcess::errorOccurred,
                         [this](QProcess::ProcessError error) {
                             if (error == QProcess::FailedToStart)
                                 end(ProcessResult::notLaunched);
                         });
        m_watchdog = m_clock.after(m_request.timeLimit, [this] { endGroup(); });
        m_process.start(QIODevice::ReadOnly);
    }
    ProcessResult takeResult() { return std::move(m_result); }

private:
    // In the child, which may make system calls alone. Comes back when one of them fails.
    void becomeProgram() const
    {
        ::setsid();
        // Libraries, too, open files; Qt's own, through which it tells of a failure, is among them.
        ::close_range(STDERR_FILENO + 1, ~0U, CLOSE_RANGE_CLOEXEC);
        if (::chdir(m_request.workingDirectory.c_str()) == 0)
            ::execve(m_request.program.c_str(), m_arguments.get(), m_environment.get());
    }

    void keepOutput()
    {
        if (m_request.outputLimit == 0)
            return;
        const QByteArray bytes = m_process.readAllStandardOutput();
        const std::size_t room = m_request.outputLimit - m_result.output.size();
        const auto size = static_cast<std::size_t>(bytes.size());
        m_result.isOutputCut = m_result.isOutputCut || size > room;
        m_result.output.append(bytes.constData(), std::min(size, room));
        if (m_result.isOutputCut) // the rest is read and dropped by Qt
            m_process.closeReadChannel(QProcess::StandardOutput);
    }

    void endGroup()
    {
        m_group = static_cast<pid_t>(m_process.processId());
        if (m_group <= 0)
            return;
        ::kill(-m_group, SIGTERM);
        m_watchdog = m_clock.after(graceBeforeKill, [this] { killGroup(); });
    }

    void killGroup()
    {
        ::kill(-m_group, SIGKILL);
        m_isKilled = true;
        if (m_hasEnded)
            waitForGroup();
    }

    void end(int status)
    {
        if (m_hasEnded)
            return;
        m_hasEnded = true;
        m_result.status = status;
        waitForGroup();
    }

    // The leader has ended. Where the group was told to, the others have the rest of its two
    // seconds; no signal goes to a group that is empty, whose number may be somebody else's soon.
    void waitForGroup()
    {
        const bool othersAreEnding = m_group > 0 && !m_isKilled && ::kill(-m_group, 0) == 0;
        if (othersAreEnding) {
            m_next = m_clock.after(groupCheck, [this] { waitForGroup(); });
            return;
        }
        m_watchdog.reset();
        // Not from within the process's own signal: what waits may release it.
        m_next = m_clock.after(std::chrono::milliseconds(0), [this] { m_waiting.resume(); });
    }

    Clock& m_clock;
    const ProcessRequest& m_request;
    const TextArray m_arguments;
    const TextArray m_environment;
    QProcess m_process;
    std::unique_ptr<Alarm> m_watchdog;
    std::unique_ptr<Alarm> m_next; // once it has ended: a look at the group, or the resuming
    std::coroutine_handle<> m_waiting;
    ProcessResult m_result;
    pid_t m_group = 0; // set once the group was told to end
    bool m_isKilled = false;
    bool m_hasEnded = false;
};

class Ending {
public:
    explicit Ending(Run& run)
        : m_run(run)
    {
    }
    [[nodiscard]] bool await_ready() const noexcept { return false; }
    void await_suspend(std::coroutine_handle<> waiting) { m_run.start(waiting); }
    ProcessResult await_resume() { return m_run.takeResult(); }

private:
    Run& m_run;
};

} // namespace

QtProcessRunner::QtProcessRunner(Clock& clock)
    : m_clock(clock)
{
}

Task<ProcessResult> QtProcessRunner::run(ProcessRequest request)
{
    Run child(m_clock, request);
    co_return co_await Ending(child);
}

} // namespace vellumor
