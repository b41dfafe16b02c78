#pragma once

#include <coroutine>
#include <deque>
#include <utility>

namespace vellumor {

// Lets the coroutines of the main thread through one at a time, in the order of their coming:
//     const auto turn = co_await mutex.lock();
// The turn ends with `turn`, and goes to the next at once. The mutex outlives all turns.
class Mutex {
public:
    Mutex() = default;
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    class [[nodiscard]] Turn {
    public:
        explicit Turn(Mutex& mutex)
            : m_mutex(&mutex)
        {
        }
        Turn(Turn&& other) noexcept
            : m_mutex(std::exchange(other.m_mutex, nullptr))
        {
        }
        Turn& operator=(Turn&&) = delete;
        Turn(const Turn&) = delete;
        Turn& operator=(const Turn&) = delete;
        ~Turn()
        {
            if (m_mutex != nullptr)
                m_mutex->next();
        }

    private:
        Mutex* m_mutex;
    };

    class [[nodiscard]] Entry {
    public:
        explicit Entry(Mutex& mutex)
            : m_mutex(mutex)
        {
        }
        [[nodiscard]] bool await_ready() const { return !std::exchange(m_mutex.m_isTaken, true); }
        void await_suspend(std::coroutine_handle<> waiting)
        {
            m_mutex.m_waiting.push_back(waiting);
        }
        Turn await_resume() { return Turn(m_mutex); }

    private:
        Mutex& m_mutex;
    };

    Entry lock() { return Entry(*this); }

private:
    void next()
    {
        if (m_waiting.empty()) {
            m_isTaken = false;
            return;
        }
        const auto waiting = m_waiting.front();
        m_waiting.pop_front();
        waiting.resume();
    }

    bool m_isTaken = false;
    std::deque<std::coroutine_handle<>> m_waiting;
};

} // namespace vellumor
