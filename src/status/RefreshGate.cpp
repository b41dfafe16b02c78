#include "status/RefreshGate.h"

namespace vellumor {

// A clock that was set back would otherwise keep the gate shut for as long.
bool RefreshGate::admit(Instant now)
{
    if (m_last && *m_last <= now && secondsBetween(*m_last, now) < seconds)
        return false;
    m_last = now;
    return true;
}

} // namespace vellumor
