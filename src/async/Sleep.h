#pragma once

#include "base/Clock.h"

#include <coroutine>

namespace vellumor {

// Awaited: goes on when `duration` has passed by the clock's own measure.
class [[nodiscard]] Sleep {
public:
    Sleep(Clock& clock, std::chrono::milliseconds duration)
        : m_clock(clock)
        , m_duration(duration)
    {
    }

    [[nodiscard]] bool await_ready() const noexcept { return m_duration.count() <= 0; }
    void await_suspend(std::coroutine_handle<> waiting)
    {
        m_alarm = m_clock.after(m_duration, [waiting] { waiting.resume(); });
    }
    void await_resume() const noexcept {}

private:
    Clock& m_clock;
    std::chrono::milliseconds m_duration;
    std::unique_ptr<Alarm> m_alarm;
};

} // namespace vellumor
