#include "updates/UpdateSchedule.h"

#include "async/OrEnd.h"

#include <algorithm>

namespace vellumor {

using std::chrono::milliseconds;

UpdateSchedule::UpdateSchedule(UpdateChecker& checker, UpdateStore& store, Clock& clock,
                               Random random, Told told)
    : m_checker(checker)
    , m_store(store)
    , m_clock(clock)
    , m_random(std::move(random))
    , m_told(std::move(told))
{
}

void UpdateSchedule::start()
{
    m_isStarted = true;
    arm(afterStart);
}

void UpdateSchedule::setAutomatic(bool automatic)
{
    UpdateState state = m_store.current();
    state.automatic = automatic;
    m_store.save(state);
    arm(milliseconds(0));
}

void UpdateSchedule::noteWake()
{
    arm(afterStart); // the network comes back later than the machine
}

milliseconds UpdateSchedule::jitter() const
{
    return milliseconds(m_random(static_cast<std::uint32_t>(milliseconds(mostJitter).count())));
}

milliseconds UpdateSchedule::delay(milliseconds atLeast) const
{
    const auto& last = m_store.current().checkedAt;
    const auto now = m_clock.now();
    if (!last || *last > now) // a clock that was set back says nothing
        return atLeast + jitter();
    const auto passed = std::chrono::duration_cast<milliseconds>(now - *last);
    return std::max(atLeast, interval - passed) + jitter();
}

void UpdateSchedule::arm(milliseconds atLeast)
{
    m_alarm.reset();
    if (!m_isStarted || m_isChecking || !isAutomatic() || !isConfigured())
        return;
    m_alarm = m_clock.after(delay(atLeast),
                            [this] { [[maybe_unused]] const Task<> running = orEnd(runCheck()); });
}

Task<> UpdateSchedule::runCheck()
{
    const std::weak_ptr<bool> alive = m_alive;
    m_isChecking = true;
    const UpdateResult result = co_await m_checker.check();
    if (alive.expired())
        co_return;
    m_isChecking = false;
    const auto* failure = std::get_if<UpdateFailure>(&result);
    const bool hasNoAnswer = failure != nullptr && failure->kind == UpdateFailure::Kind::transport;
    arm(hasNoAnswer ? milliseconds(afterFailure) : milliseconds(interval));
    m_told(result);
}

} // namespace vellumor
