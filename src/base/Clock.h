#pragma once

#include "base/Instant.h"

#include <functional>
#include <memory>

namespace vellumor {

// One pending call of a Clock; destroying it cancels the call.
class Alarm {
public:
    Alarm() = default;
    Alarm(const Alarm&) = delete;
    Alarm& operator=(const Alarm&) = delete;
    virtual ~Alarm() = default;
};

// Time, as everything but the platform sees it: judgements use now(), waiting uses after().
class Clock {
public:
    virtual ~Clock() = default;

    // The wall clock, in whole milliseconds. Callable from any thread. It may jump.
    [[nodiscard]] virtual Instant now() const = 0;

    // Calls `then` once on the calling thread's event loop when `delay` has passed, which is
    // measured by a clock that does not jump. A delay of zero or less is due at the loop's next
    // turn.
    [[nodiscard]] virtual std::unique_ptr<Alarm> after(std::chrono::milliseconds delay,
                                                       std::function<void()> then) = 0;
};

} // namespace vellumor
