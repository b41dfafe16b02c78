#pragma once

#include "async/Task.h"
#include "async/Worker.h"
#include "base/Clock.h"
#include "platform/SleepWatcher.h"

#include <QObject>
#include <QPointer>

#include <chrono>
#include <memory>
#include <string>

namespace vellumor {

// SleepWatcher on logind's PrepareForSleep. As long as there is no logind, or no system bus that
// answers, it looks every thirty seconds whether the clock that goes on in a sleep has run ahead of
// the one that does not. A logind that goes away between a sleep and its end counts as the end.
// Main thread only; start it once.
class LogindSleepWatcher final : public QObject, public SleepWatcher {
    Q_OBJECT

public:
    // How long the machine has been up, with and without its sleeps.
    struct Uptime {
        std::chrono::milliseconds withSleep;
        std::chrono::milliseconds withoutSleep;
    };

    // `busAddress` as DBUS_SYSTEM_BUS_ADDRESS has it; empty for the usual one. `worker` and `clock`
    // outlive the watcher.
    LogindSleepWatcher(Worker& worker, std::string busAddress, Clock& clock,
                       std::function<Uptime()> uptime = systemUptime);
    ~LogindSleepWatcher() override;

    void start(std::function<void()> willSleep, std::function<void()> didWake) override;

    [[nodiscard]] static Uptime systemUptime();

private slots:
    void onPrepareForSleep(bool isBeginning);
    void onOwnerChanged(const QString& name, const QString& before, const QString& now);
    void onBusLost();

private:
    [[nodiscard]] static Task<> begin(QPointer<LogindSleepWatcher> self, Worker& worker);
    [[nodiscard]] bool listen();
    void askForLogind();
    void relyOnLogind(bool isThere);
    void lookAtClocks();

    Worker& m_worker;
    std::string m_busAddress;
    Clock& m_clock;
    std::function<Uptime()> m_uptime;
    std::function<void()> m_willSleep;
    std::function<void()> m_didWake;
    std::unique_ptr<Alarm> m_nextLook;
    std::chrono::milliseconds m_slept{}; // as it stood at the last look
    bool m_isGoingToSleep = false;       // told, and no end of it yet
    Task<> m_begun;
};

} // namespace vellumor
