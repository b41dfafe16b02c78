#pragma once

#include <condition_variable>
#include <coroutine>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <type_traits>
#include <utility>
#include <variant>

namespace vellumor {

// One thread that runs what can block, in the order in which it was asked. Made and destroyed on
// the main thread, while its event loop exists; the end waits for all jobs, and resumes nobody.
class Worker {
public:
    Worker();
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;
    ~Worker();

    // From any thread. The job must not throw.
    void post(std::function<void()> job);

    // Awaited on the main thread: runs `job` on the worker and gives its result back on the main
    // thread. The job must not throw. Nothing runs until it is awaited. The awaiting coroutine must
    // not be destroyed while the job runs.
    template <typename Job>
    class [[nodiscard]] Result {
    public:
        using Value = std::invoke_result_t<Job&>;

        Result(Worker& worker, Job job)
            : m_worker(worker)
            , m_job(std::move(job))
        {
        }

        [[nodiscard]] bool await_ready() const noexcept { return false; }
        void await_suspend(std::coroutine_handle<> waiting)
        {
            ++m_worker.m_awaited;
            m_worker.post([this, waiting] {
                if constexpr (std::is_void_v<Value>)
                    m_job();
                else
                    m_value.emplace(m_job());
                m_worker.resumeOnMainThread(waiting);
            });
        }
        Value await_resume()
        {
            --m_worker.m_awaited;
            if constexpr (!std::is_void_v<Value>)
                return *std::move(m_value);
        }

    private:
        using Held = std::conditional_t<std::is_void_v<Value>, std::monostate, Value>;

        Worker& m_worker;
        Job m_job;
        std::optional<Held> m_value; // written by the worker, read after it has handed back
    };

    template <typename Job>
    [[nodiscard]] Result<Job> run(Job job)
    {
        return Result<Job>(*this, std::move(job));
    }

    // How many awaited jobs have not come back. On the main thread.
    [[nodiscard]] std::size_t awaited() const { return m_awaited; }

private:
    class HandBack;

    void resumeOnMainThread(std::coroutine_handle<> waiting);
    void runJobs();

    std::size_t m_awaited = 0; // touched by the main thread alone
    std::unique_ptr<HandBack> m_handBack;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<std::function<void()>> m_jobs; // guarded by m_mutex
    bool m_isEnding = false;                  // guarded by m_mutex
    std::thread m_thread;                     // the last member: it uses all others
};

} // namespace vellumor
