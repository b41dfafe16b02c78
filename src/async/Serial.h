#pragma once

#include "async/Worker.h"

#include <utility>

namespace vellumor {

// A value that one worker alone touches, one operation at a time, so that a read-modify-write needs
// no lock:
//     auto lines = co_await log([](RateLimitLog& log) { return log.recent(5); });
// The owner keeps it alive while an operation runs.
template <typename T>
class Serial {
public:
    template <typename... Arguments>
    explicit Serial(Worker& worker, Arguments&&... arguments)
        : m_worker(worker)
        , m_value(std::forward<Arguments>(arguments)...)
    {
    }
    Serial(const Serial&) = delete;
    Serial& operator=(const Serial&) = delete;

    template <typename Operation>
    [[nodiscard]] auto operator()(Operation operation)
    {
        return m_worker.run(
            [this, operation = std::move(operation)]() mutable { return operation(m_value); });
    }

    // Runs it in its turn, and nobody waits for it.
    template <typename Operation>
    void post(Operation operation)
    {
        m_worker.post([this, operation = std::move(operation)]() mutable { operation(m_value); });
    }

private:
    Worker& m_worker;
    T m_value; // touched by the worker alone
};

} // namespace vellumor
