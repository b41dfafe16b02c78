#pragma once

#include "platform/HttpTransport.h"

#include <coroutine>
#include <string>
#include <utility>
#include <vector>

namespace vellumor::test {

// Answers what it is told to, at once or when it is let go on, and notes what it was asked.
class FakeTransport final : public HttpTransport {
public:
    HttpAnswer answer;
    bool isHeld = false;
    std::vector<std::string> urls;
    std::vector<std::string> bearers;

    Task<HttpAnswer> get(HttpRequest request) override
    {
        urls.push_back(request.url);
        bearers.emplace_back(request.bearer.view());
        if (isHeld)
            co_await Held{m_waiting};
        auto copy = answer;
        co_return copy;
    }

    void letGo()
    {
        isHeld = false;
        for (const auto& handle : std::exchange(m_waiting, {}))
            handle.resume();
    }

private:
    struct Held {
        std::vector<std::coroutine_handle<>>& waiting;
        [[nodiscard]] bool await_ready() const noexcept { return false; }
        void await_suspend(std::coroutine_handle<> handle) const { waiting.push_back(handle); }
        void await_resume() const noexcept {}
    };

    std::vector<std::coroutine_handle<>> m_waiting;
};

inline HttpAnswer answered(int status, std::string body = "")
{
    return {HttpAnswer::Kind::answered, status, std::move(body), std::nullopt, ""};
}

} // namespace vellumor::test
