#pragma once

#include "support/FakeClock.h"

#include <chrono>
#include <functional>
#include <map>

namespace vellumor::simulation {

using std::chrono::milliseconds;

constexpr std::chrono::hours week{168};

// The time of a simulation: true time, which only goes forward, and in which the machine may stand
// still; the program's clock follows it. What the world does stands on the agenda.
class Timeline {
public:
    // `settle` lets everything run that needs no time.
    Timeline(test::FakeClock& clock, std::function<void()> settle);

    // Since the beginning, sleeps included.
    [[nodiscard]] milliseconds now() const { return m_now; }
    [[nodiscard]] Instant trueTime() const { return m_start + m_now; }
    void after(milliseconds delay, std::function<void()> then);
    void runUntil(milliseconds end);

    // While the machine sleeps its timers stand still, and its wall clock goes on.
    void freeze() { m_isFrozen = true; }
    void thaw() { m_isFrozen = false; }
    [[nodiscard]] bool isFrozen() const { return m_isFrozen; }

private:
    void advanceTo(milliseconds moment);

    test::FakeClock& m_clock;
    std::function<void()> m_settle;
    Instant m_start;
    milliseconds m_now{};
    bool m_isFrozen = false;
    std::multimap<milliseconds, std::function<void()>> m_agenda;
};

} // namespace vellumor::simulation
