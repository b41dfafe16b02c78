#pragma once

#include "platform/ProcessRunner.h"

#include <coroutine>
#include <deque>
#include <optional>
#include <utility>
#include <vector>

namespace vellumor::test {

// Starts nothing: notes each request, and answers what it was told to, at once or when it is told.
class FakeProcessRunner final : public ProcessRunner {
public:
    // All requests, in the order of their coming.
    std::vector<ProcessRequest> requests;

    // The result of the next call that has none yet. A call without one ends well, saying nothing.
    void answer(ProcessResult result) { m_results.push_back({std::move(result), false}); }
    // The same, but the call waits for finishNext().
    void answerLate(ProcessResult result) { m_results.push_back({std::move(result), true}); }
    // Ends the call that has been waiting longest.
    void finishNext()
    {
        const auto waiting = m_waiting.front();
        m_waiting.pop_front();
        waiting.resume();
    }
    [[nodiscard]] std::size_t running() const { return m_waiting.size(); }

    [[nodiscard]] Task<ProcessResult> run(ProcessRequest request) override
    {
        requests.push_back(std::move(request));
        Scripted next{{0, "", false}, false};
        if (!m_results.empty()) {
            next = std::move(m_results.front());
            m_results.pop_front();
        }
        if (next.isLate)
            co_await Ending{m_waiting};
        co_return std::move(next.result);
    }

private:
    struct Scripted {
        ProcessResult result;
        bool isLate;
    };
    using Waiting = std::deque<std::coroutine_handle<>>;
    struct Ending {
        Waiting& all;
        [[nodiscard]] bool await_ready() const noexcept { return false; }
        void await_suspend(std::coroutine_handle<> waiting) { all.push_back(waiting); }
        void await_resume() const noexcept {}
    };

    std::deque<Scripted> m_results;
    Waiting m_waiting;
};

} // namespace vellumor::test
