#pragma once

#include "platform/HttpPoster.h"

#include <coroutine>
#include <utility>
#include <vector>

namespace vellumor::test {

inline HttpAnswer answeredWith(int status)
{
    return {HttpAnswer::Kind::answered, status, "", {}, ""};
}

// Notes what is posted, and answers when it is told to; who still waits at the end has no answer.
struct FakePoster final : HttpPoster {
    std::vector<HttpPost> posts;

    ~FakePoster() override { answer({}); }

    // To all who wait. What they post then waits in turn.
    void answer(HttpAnswer with)
    {
        m_answer = std::move(with);
        for (const auto handle : std::exchange(m_waiting, {}))
            handle.resume();
    }
    void answer(int status) { answer(answeredWith(status)); }
    [[nodiscard]] std::size_t waiting() const { return m_waiting.size(); }

    Task<HttpAnswer> post(HttpPost request) override
    {
        posts.push_back(std::move(request));
        co_await Turn{*this};
        auto copy = m_answer;
        co_return copy;
    }

private:
    struct Turn {
        FakePoster& poster;
        [[nodiscard]] bool await_ready() const noexcept { return false; }
        void await_suspend(std::coroutine_handle<> handle) const
        {
            poster.m_waiting.push_back(handle);
        }
        void await_resume() const noexcept {}
    };

    HttpAnswer m_answer;
    std::vector<std::coroutine_handle<>> m_waiting;
};

} // namespace vellumor::test
