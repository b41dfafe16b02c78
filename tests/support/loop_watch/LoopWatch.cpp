// loop_watch: preloaded into a program, it measures for how long the main thread keeps its event
// loop from turning: the time from the end of one wait of the loop to the beginning of the next,
// less the time in which the thread waited for a processor, since that is the doing of others. What
// comes before the first wait is the start of the program and does not count. It must be the first
// one in LD_PRELOAD. See LoopReport.

#include "support/loop_watch/LoopReport.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>
#include <string_view>

namespace {

using vellumor::test::LoopReport;

// Asked of the kernel itself: another preloaded library may make the clock run faster.
std::uint64_t nanosecondsNow()
{
    timespec now{};
    ::syscall(SYS_clock_gettime, CLOCK_MONOTONIC, &now);
    return static_cast<std::uint64_t>(now.tv_sec) * 1'000'000'000U +
           static_cast<std::uint64_t>(now.tv_nsec);
}

// The loop is woken by other threads through one, while a wait for something certain has none.
bool isEventDescriptor(int descriptor)
{
    constexpr std::string_view kind = "anon_inode:[eventfd]";
    std::array<char, 64> name{};
    const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
    const auto size = ::readlink(link.c_str(), name.data(), name.size());
    return size > 0 && std::string_view(name.data(), static_cast<std::size_t>(size)) == kind;
}

class LoopWatch {
public:
    LoopWatch()
    {
        const char* const path = std::getenv(LoopReport::variable);
        if (path == nullptr)
            return;
        const int file = ::open(path, O_RDWR | O_CREAT | O_CLOEXEC, 0600);
        if (file < 0 || ::ftruncate(file, sizeof(LoopReport)) != 0)
            std::abort();
        void* const memory =
            ::mmap(nullptr, sizeof(LoopReport), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
        ::close(file);
        m_schedule = ::open("/proc/self/schedstat", O_RDONLY | O_CLOEXEC); // of the main thread
        if (memory == MAP_FAILED || m_schedule < 0)
            std::abort();
        m_report = new (memory) LoopReport();
        m_mainThread = ::getpid();
        hide();
    }

    // Whether this call is a wait of the main thread's event loop.
    [[nodiscard]] bool isWaitOfLoop(const pollfd* descriptors, nfds_t count)
    {
        if (m_report == nullptr || ::gettid() != m_mainThread)
            return false;
        const pollfd* const end = descriptors + count;
        if (m_wakeUp >= 0)
            return std::any_of(descriptors, end, [this](auto& one) { return one.fd == m_wakeUp; });
        const pollfd* const found = std::find_if(
            descriptors, end, [](const pollfd& one) { return isEventDescriptor(one.fd); });
        if (found == end)
            return false;
        m_wakeUp = found->fd;
        return true;
    }

    // In both, whatever comes between the two readings is time that does not count.
    void beginWait()
    {
        if (m_waitEnded == 0)
            return;
        const std::uint64_t span = nanosecondsNow() - m_waitEnded;
        const std::uint64_t delay = nanosecondsDelayed() - m_delayed;
        const std::uint64_t microseconds = (span - std::min(span, delay)) / 1000;
        ++m_report->turns;
        if (microseconds > m_report->longestMicroseconds) {
            m_report->longestMicroseconds = microseconds;
            m_report->longestTurn = m_report->turns;
        }
    }
    void endWait()
    {
        m_delayed = nanosecondsDelayed();
        m_waitEnded = nanosecondsNow();
    }

private:
    // For how long the main thread could have run, but had no processor.
    [[nodiscard]] std::uint64_t nanosecondsDelayed() const
    {
        std::array<char, 96> text{};
        const auto size = ::pread(m_schedule, text.data(), text.size(), 0);
        const std::string_view numbers(text.data(), static_cast<std::size_t>(std::max(size, 0L)));
        const auto second = numbers.find(' ') + 1;
        std::uint64_t delayed = 0;
        std::from_chars(numbers.data() + second, numbers.data() + numbers.size(), delayed);
        return delayed;
    }

    // The program's own processes are none of ours, while other libraries may be theirs, too.
    static void hide()
    {
        ::unsetenv(LoopReport::variable);
        const char* const preloaded = std::getenv("LD_PRELOAD");
        const char* const rest = preloaded == nullptr ? nullptr : std::strchr(preloaded, ':');
        if (rest == nullptr)
            ::unsetenv("LD_PRELOAD");
        else
            ::setenv("LD_PRELOAD", std::string(rest + 1).c_str(), 1);
    }

    LoopReport* m_report = nullptr; // in the file; none: nothing is watched
    int m_schedule = -1;
    pid_t m_mainThread = -1;
    int m_wakeUp = -1; // known from the first wait on
    std::uint64_t m_waitEnded = 0;
    std::uint64_t m_delayed = 0; // as it stood then
};

LoopWatch& watch()
{
    static LoopWatch only;
    return only;
}

// Before main, since the program may look at its environment there.
[[gnu::constructor]] void begin()
{
    (void)watch();
}

template <typename Function>
Function* original(const char* name)
{
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

template <typename Call>
int watched(const pollfd* descriptors, nfds_t count, Call call)
{
    if (!watch().isWaitOfLoop(descriptors, count))
        return call();
    watch().beginWait();
    const int result = call();
    const int error = errno;
    watch().endWait();
    errno = error;
    return result;
}

} // namespace

// GLib's loop waits with the one, Qt's own with the other.
extern "C" int poll(pollfd* descriptors, nfds_t count, int timeout)
{
    static auto* const next = original<decltype(poll)>("poll");
    return watched(descriptors, count, [&] { return next(descriptors, count, timeout); });
}

extern "C" int ppoll(pollfd* descriptors, nfds_t count, const timespec* timeout,
                     const sigset_t* signals)
{
    static auto* const next = original<decltype(ppoll)>("ppoll");
    return watched(descriptors, count, [&] { return next(descriptors, count, timeout, signals); });
}
