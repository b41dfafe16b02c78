#include "async/LiveClock.h"

#include "base/SystemClock.h"

#include <QTimer>

#include <algorithm>
#include <limits>

namespace vellumor {

namespace {

class TimerAlarm final : public Alarm {
public:
    TimerAlarm(std::chrono::milliseconds delay, std::function<void()> then)
        : m_then(std::move(then))
    {
        m_timer.setSingleShot(true);
        m_timer.setTimerType(Qt::PreciseTimer);
        // The call may destroy this alarm, so it works on a copy of its own.
        QObject::connect(&m_timer, &QTimer::timeout, [this] {
            const auto call = std::move(m_then);
            call();
        });
        // The timer counts in an int; what lies weeks ahead comes a little early rather than never.
        m_timer.start(std::clamp(delay, std::chrono::milliseconds(0),
                                 std::chrono::milliseconds(std::numeric_limits<int>::max())));
    }

private:
    QTimer m_timer;
    std::function<void()> m_then;
};

} // namespace

Instant LiveClock::now() const
{
    return systemNow();
}

std::unique_ptr<Alarm> LiveClock::after(std::chrono::milliseconds delay, std::function<void()> then)
{
    return std::make_unique<TimerAlarm>(delay, std::move(then));
}

} // namespace vellumor
