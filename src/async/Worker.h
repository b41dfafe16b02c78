#pragma once

#include <QCoreApplication>
#include <QMetaObject>
#include <QThreadPool>

#include <coroutine>
#include <functional>
#include <optional>
#include <type_traits>
#include <utility>
#include <variant>

namespace vellumor {

// One thread that runs what can block, in the order in which it was asked. It ends with the
// program, after the job that is running.
class Worker {
public:
    Worker()
    {
        m_pool.setMaxThreadCount(1);
        m_pool.setExpiryTimeout(-1);
    }
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    void post(std::function<void()> job) { m_pool.start(std::move(job)); }

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
            m_worker.post([this, waiting] {
                if constexpr (std::is_void_v<Value>)
                    m_job();
                else
                    m_value.emplace(m_job());
                QMetaObject::invokeMethod(
                    QCoreApplication::instance(), [waiting] { waiting.resume(); },
                    Qt::QueuedConnection);
            });
        }
        Value await_resume()
        {
            if constexpr (!std::is_void_v<Value>)
                return *std::move(m_value);
        }

    private:
        using Held = std::conditional_t<std::is_void_v<Value>, std::monostate, Value>;

        Worker& m_worker;
        Job m_job;
        std::optional<Held>
            m_value; // written by the worker, read once the loop has told the main thread
    };

    template <typename Job>
    [[nodiscard]] Result<Job> run(Job job)
    {
        return Result<Job>(*this, std::move(job));
    }

private:
    QThreadPool m_pool;
};

} // namespace vellumor
