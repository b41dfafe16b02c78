#pragma once

#include "base/Clock.h"

#include <functional>
#include <memory>
#include <vector>

namespace vellumor {

// Tells observers that something has changed: after the change, and once a turn of the event loop
// however often it was announced. Main thread only.
class ChangeNotice {
public:
    // `clock` outlives it.
    explicit ChangeNotice(Clock& clock)
        : m_clock(clock)
    {
    }

    // Observers are called in the order in which they came, for as long as this lives.
    void observe(std::function<void()> observer) { m_observers.push_back(std::move(observer)); }
    void announce()
    {
        if (!m_pending)
            m_pending = m_clock.after(std::chrono::milliseconds(0), [this] { tell(); });
    }

private:
    void tell()
    {
        m_pending.reset(); // what an observer changes is told in the next turn
        for (const auto& observer : std::vector(m_observers))
            observer();
    }

    Clock& m_clock;
    std::vector<std::function<void()>> m_observers;
    std::unique_ptr<Alarm> m_pending;
};

} // namespace vellumor
