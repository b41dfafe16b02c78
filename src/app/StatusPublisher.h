#pragma once

#include "app/state/AppState.h"
#include "platform/StatusService.h"
#include "status/RefreshGate.h"
#include "status/sources/StatusInput.h"

#include <functional>
#include <memory>

namespace vellumor {

// Gives the status service what the popover shows, and tells it when that has changed. Main thread
// only.
class StatusPublisher {
public:
    struct Parts {
        AppState& appState;
        Clock& clock;
        StatusService& service;
        ShortTime shortTime;
        std::function<void()> openPopover;
    };

    // Everything borrowed outlives it.
    explicit StatusPublisher(Parts parts);
    StatusPublisher(const StatusPublisher&) = delete;
    StatusPublisher& operator=(const StatusPublisher&) = delete;

    // Once; it lives as long as the event loop from then on.
    void start();

private:
    [[nodiscard]] StatusInput gather() const;
    [[nodiscard]] StatusReport report();
    [[nodiscard]] bool refresh();
    void noteChange();
    void look();
    void scheduleStaleness();

    Parts m_parts;
    RefreshGate m_gate;
    StatusInput m_input;   // what the report was made of
    StatusReport m_report; // as it was told last
    Instant m_reportedAt{};
    StatusReport m_announced; // as it was when a change was announced last, without times
    std::unique_ptr<Alarm> m_nextStaleness;
};

} // namespace vellumor
