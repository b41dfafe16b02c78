#pragma once

#include "status/StatusReport.h"

#include <functional>

namespace vellumor {

// Where others on the desktop ask what the popover shows, and hear that it has changed. Main thread
// only.
class StatusService {
public:
    struct Handlers {
        std::function<StatusReport()> report; // as it stands now; asked for by others, often
        std::function<bool()> refresh;        // false: not so soon again
        std::function<void()> openPopover;
    };

    virtual ~StatusService() = default;

    // Once. Where there is nobody who could ask it does nothing.
    virtual void start(Handlers handlers) = 0;
    // The report is another one than before.
    virtual void announceChange() = 0;
};

} // namespace vellumor
