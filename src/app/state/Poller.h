#pragma once

#include "app/state/AppState.h"
#include "async/Task.h"
#include "base/Clock.h"

#include <functional>
#include <memory>

namespace vellumor {

// The loop that keeps the readings fresh: one account a tick, the ticks spread evenly over the
// interval, a full round only at the start, after a sleep and after an offline spell. Stands still
// while the machine sleeps or is offline. Main thread only.
class Poller {
public:
    struct Parts {
        AppState& appState;
        Clock& clock;
        std::function<bool()> isOnline;
        std::function<double()> jitter;           // uniform in -0.1 to 0.1
        std::function<Task<>(Instant)> afterTick; // what else is due once a tick
    };

    // Everything borrowed outlives the poller, and the poller its ticks. A scan has just been made.
    explicit Poller(Parts parts);
    Poller(const Poller&) = delete;
    Poller& operator=(const Poller&) = delete;

    // Begins anew, with a full round first when `immediate`; offline it only ends the loop.
    void startLoop(bool immediate);
    // A tick that is under way runs to its end.
    void stopLoop();
    [[nodiscard]] bool isRunning() const { return m_isRunning; }

    // For the network monitor, and for the watcher of sleep and wake.
    void observeNetwork(bool isOnline);
    void willSleep() { stopLoop(); }
    void didWake() { startLoop(true); }

    [[nodiscard]] Task<> tick(bool full);

private:
    [[nodiscard]] Task<> begin(int loop, bool immediate);
    [[nodiscard]] Task<> tickAndGoOn(int loop);
    void scheduleNext(int loop);
    [[nodiscard]] bool isScanDue(Instant now) const;
    [[nodiscard]] bool needsAttention(Instant now) const;

    Parts m_parts;
    Instant m_lastDiscovery;
    bool m_isRunning = false;
    int m_loop = 0; // which loop is the present one; older ones end at their next step
    std::unique_ptr<Alarm> m_next;
    Task<> m_current;
};

} // namespace vellumor
