#include "simulation/Timeline.h"

#include <algorithm>
#include <utility>

namespace vellumor::simulation {

Timeline::Timeline(test::FakeClock& clock, std::function<void()> settle)
    : m_clock(clock)
    , m_settle(std::move(settle))
    , m_start(clock.now())
{
}

void Timeline::after(milliseconds delay, std::function<void()> then)
{
    m_agenda.emplace(m_now + delay, std::move(then));
}

void Timeline::runUntil(milliseconds end)
{
    m_settle();
    while (m_now < end) {
        milliseconds next = end;
        if (!m_agenda.empty())
            next = std::min(next, m_agenda.begin()->first);
        if (const auto alarm = m_clock.untilNextAlarm(); alarm && !m_isFrozen)
            next = std::min(next, m_now + *alarm);
        advanceTo(next);
        while (!m_agenda.empty() && m_agenda.begin()->first <= m_now) {
            auto due = m_agenda.extract(m_agenda.begin());
            due.mapped()();
            m_settle();
        }
    }
}

void Timeline::advanceTo(milliseconds moment)
{
    const milliseconds passed = moment - m_now;
    m_now = moment;
    if (m_isFrozen)
        m_clock.jumpTo(m_clock.now() + passed);
    else
        m_clock.advance(passed);
    m_settle();
}

} // namespace vellumor::simulation
