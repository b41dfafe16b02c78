#pragma once

#include "base/Clock.h"

namespace vellumor {

// The system's time, and timers of the calling thread's event loop.
class LiveClock final : public Clock {
public:
    [[nodiscard]] Instant now() const override;
    [[nodiscard]] std::unique_ptr<Alarm> after(std::chrono::milliseconds delay,
                                               std::function<void()> then) override;
};

} // namespace vellumor
