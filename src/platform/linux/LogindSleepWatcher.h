#pragma once

#include "base/Clock.h"
#include "platform/SleepWatcher.h"

#include <QObject>

#include <chrono>
#include <memory>
#include <string>

namespace vellumor {

// SleepWatcher on logind's PrepareForSleep. Where the system bus cannot be reached, it looks every
// thirty seconds whether the clock that goes on in a sleep has run ahead of the one that does not.
// Main thread only; start it once.
class LogindSleepWatcher final : public QObject, public SleepWatcher {
    Q_OBJECT

public:
    // How long the machine has been up, with and without its sleeps.
    struct Uptime {
        std::chrono::milliseconds withSleep;
        std::chrono::milliseconds withoutSleep;
    };

    // `busAddress` as DBUS_SYSTEM_BUS_ADDRESS has it; empty for the usual one. `clock` outlives the
    // watcher.
    LogindSleepWatcher(std::string busAddress, Clock& clock,
                       std::function<Uptime()> uptime = systemUptime);
    ~LogindSleepWatcher() override;

    void start(std::function<void()> willSleep, std::function<void()> didWake) override;

    [[nodiscard]] static Uptime systemUptime();

private slots:
    void onPrepareForSleep(bool isBeginning);

private:
    [[nodiscard]] bool listen();
    void lookAtClocks();

    std::string m_busAddress;
    Clock& m_clock;
    std::function<Uptime()> m_uptime;
    std::function<void()> m_willSleep;
    std::function<void()> m_didWake;
    std::unique_ptr<Alarm> m_nextLook;
    std::chrono::milliseconds m_slept{}; // as it stood at the last look
};

} // namespace vellumor
