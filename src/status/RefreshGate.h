#pragma once

#include "base/Instant.h"

#include <optional>

namespace vellumor {

// How often others may ask for a refresh: whoever asks again and again must not make the program
// ask the endpoint more often than a person would.
class RefreshGate {
public:
    static constexpr double seconds = 20.0; // from one to the next

    // Whether it may be now, and from then on is counted.
    [[nodiscard]] bool admit(Instant now);

private:
    std::optional<Instant> m_last;
};

} // namespace vellumor
