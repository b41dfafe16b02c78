#include "async/LiveClock.h"

#include "base/SystemClock.h"

#include <QTimer>

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
        m_timer.start(std::max(delay, std::chrono::milliseconds(0)));
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
