#pragma once

#include <functional>
#include <optional>
#include <string>

namespace vellumor {

// One running copy of the program for one user.
class SingleInstance {
public:
    virtual ~SingleInstance() = default;

    // The process id of another copy that runs; creates nothing.
    [[nodiscard]] virtual std::optional<int> otherCopy() = 0;

    // Makes this the running copy, and calls `onActivate` on the main thread whenever a later start
    // hands over to it, with the token that lets a window take the focus (empty without one). Gives
    // the other's process id when a copy came first. Where nothing can be claimed (no bus, a
    // read-only home) the start goes on.
    [[nodiscard]] virtual std::optional<int>
    claim(std::function<void(const std::string& activationToken)> onActivate) = 0;

    // Asks the other copy to come to the front. Waits some seconds at most; a failure has no
    // consequence.
    virtual void activateOther() = 0;
};

} // namespace vellumor
