#pragma once

#include "async/Task.h"
#include "base/Clock.h"
#include "updates/UpdateChecker.h"
#include "updates/UpdateStore.h"

#include <cstdint>
#include <functional>
#include <memory>

namespace vellumor {

// Looks for updates by itself: some minutes after the start, and then once a day, each time a
// little later by chance, so that not all copies ask at once. Idle in between but for one alarm,
// and without even that while it is switched off or no feed is built in. Main thread only.
class UpdateSchedule {
public:
    static constexpr std::chrono::minutes afterStart{5};
    static constexpr std::chrono::hours interval{24};
    static constexpr std::chrono::hours afterFailure{1}; // when nobody has answered
    static constexpr std::chrono::minutes mostJitter{30};

    // Uniform in 0 to `bound` minus 1: SecureRandom::below.
    using Random = std::function<std::uint32_t(std::uint32_t bound)>;
    // Of every check that was begun here, also of one that failed.
    using Told = std::function<void(const UpdateResult& result)>;

    // Everything borrowed outlives the schedule.
    UpdateSchedule(UpdateChecker& checker, UpdateStore& store, Clock& clock, Random random,
                   Told told);

    // Once, when the program runs.
    void start();
    // Keeps the user's wish, and follows it from now on.
    void setAutomatic(bool automatic);
    // After a sleep, in which alarms stand still.
    void noteWake();

    [[nodiscard]] bool isAutomatic() const { return m_store.current().automatic; }
    // Whether there is anything to switch: without a feed the controls are disabled.
    [[nodiscard]] bool isConfigured() const { return m_checker.isConfigured(); }

private:
    // How long until the next check, when none may come before `atLeast` has passed.
    [[nodiscard]] std::chrono::milliseconds delay(std::chrono::milliseconds atLeast) const;
    [[nodiscard]] std::chrono::milliseconds jitter() const;
    void arm(std::chrono::milliseconds atLeast);
    [[nodiscard]] Task<> runCheck();

    UpdateChecker& m_checker;
    UpdateStore& m_store;
    Clock& m_clock;
    Random m_random;
    Told m_told;
    bool m_isStarted = false;
    bool m_isChecking = false;
    std::unique_ptr<Alarm> m_alarm;
    std::shared_ptr<bool> m_alive = std::make_shared<bool>(true);
};

} // namespace vellumor
