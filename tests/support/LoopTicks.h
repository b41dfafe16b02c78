#pragma once

#include <QTimer>

namespace vellumor::test {

// Counts while the main thread's event loop turns, every ten milliseconds. Whoever blocks that
// thread for the better part of a second or more leaves a count far below what a waiting loop
// reaches.
class LoopTicks {
public:
    LoopTicks()
    {
        m_timer.setInterval(10);
        QObject::connect(&m_timer, &QTimer::timeout, [this] { ++m_count; });
        m_timer.start();
    }

    [[nodiscard]] int count() const { return m_count; }

private:
    QTimer m_timer;
    int m_count = 0;
};

} // namespace vellumor::test
