#pragma once

#include "async/Worker.h"

#include <memory>
#include <utility>

namespace vellumor {

// A value that one worker alone touches, one operation at a time, so that a read-modify-write needs
// no lock:
//     auto lines = co_await log([](RateLimitLog& log) { return log.recent(5); });
// It lives as long as operations are due, so what it borrows outlives the worker.
template <typename T>
class Serial {
public:
    template <typename... Arguments>
    explicit Serial(Worker& worker, Arguments&&... arguments)
        : m_worker(worker)
        , m_value(std::make_shared<T>(std::forward<Arguments>(arguments)...))
    {
    }
    Serial(const Serial&) = delete;
    Serial& operator=(const Serial&) = delete;

    template <typename Operation>
    [[nodiscard]] auto operator()(Operation operation)
    {
        return m_worker.run([value = m_value, operation = std::move(operation)]() mutable {
            return operation(*value);
        });
    }

    // Runs it in its turn, and nobody waits for it.
    template <typename Operation>
    void post(Operation operation)
    {
        m_worker.post(
            [value = m_value, operation = std::move(operation)]() mutable { operation(*value); });
    }

private:
    Worker& m_worker;
    std::shared_ptr<T> m_value; // touched by the worker alone; jobs that are due outlive this
};

} // namespace vellumor
