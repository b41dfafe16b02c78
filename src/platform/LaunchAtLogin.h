#pragma once

#include <optional>
#include <string>

namespace vellumor {

// Whether the desktop starts the program when the user signs in. Both calls read or write a small
// file and may wait for the disk: for a worker, one caller at a time.
class LaunchAtLogin {
public:
    virtual ~LaunchAtLogin() = default;

    [[nodiscard]] virtual bool isEnabled() const = 0;
    // Nothing when it is as wanted then, else why not, in the system's words.
    [[nodiscard]] virtual std::optional<std::string> setEnabled(bool on) = 0;
};

} // namespace vellumor
