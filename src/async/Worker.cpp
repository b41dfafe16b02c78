#include "async/Worker.h"

#include "base/FileHandle.h"

#include <QSocketNotifier>

#include <sys/eventfd.h>

namespace vellumor {

// What the worker has finished, on its way to the main thread: the event loop is woken through a
// descriptor, and the handles go through a lock of our own. The thread sanitizer sees both, while
// it takes the queue of posted events, whose library it cannot see into, for a race.
class Worker::HandBack {
public:
    HandBack()
        : m_wakeUp(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
        , m_notifier(m_wakeUp.get(), QSocketNotifier::Read)
    {
        QObject::connect(&m_notifier, &QSocketNotifier::activated, [this] { resumeAll(); });
    }

    void put(std::coroutine_handle<> waiting)
    {
        const std::scoped_lock lock(m_mutex);
        m_waiting.push_back(waiting);
        ::eventfd_write(m_wakeUp.get(), 1);
    }

private:
    void resumeAll()
    {
        std::deque<std::coroutine_handle<>> waiting;
        {
            const std::scoped_lock lock(m_mutex);
            eventfd_t count = 0;
            ::eventfd_read(m_wakeUp.get(), &count);
            waiting.swap(m_waiting);
        }
        for (const auto& handle : waiting) // one of them may be the end of this
            handle.resume();
    }

    FileHandle m_wakeUp;
    QSocketNotifier m_notifier;
    std::mutex m_mutex;
    std::deque<std::coroutine_handle<>> m_waiting; // guarded by m_mutex
};

Worker::Worker()
    : m_handBack(std::make_unique<HandBack>())
    , m_thread([this] { runJobs(); })
{
}

Worker::~Worker()
{
    {
        const std::scoped_lock lock(m_mutex);
        m_isEnding = true;
    }
    m_changed.notify_one();
    m_thread.join();
}

void Worker::post(std::function<void()> job)
{
    {
        const std::scoped_lock lock(m_mutex);
        m_jobs.push_back(std::move(job));
    }
    m_changed.notify_one();
}

void Worker::resumeOnMainThread(std::coroutine_handle<> waiting)
{
    m_handBack->put(waiting);
}

void Worker::runJobs()
{
    std::unique_lock lock(m_mutex);
    while (true) {
        m_changed.wait(lock, [this] { return m_isEnding || !m_jobs.empty(); });
        if (m_jobs.empty())
            return;
        auto job = std::move(m_jobs.front());
        m_jobs.pop_front();
        lock.unlock();
        job();
        job = nullptr; // what it holds is released outside the lock, too
        lock.lock();
    }
}

} // namespace vellumor
