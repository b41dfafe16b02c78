#pragma once

#include <QPalette>

#include <optional>

namespace vellumor {

// The colours of the application's windows. Qt takes them from the desktop where it knows the
// desktop; where it does not, they are light, and this makes them dark for a user who wants a dark
// desktop. Main thread only.
class DesktopPalette {
public:
    DesktopPalette();

    // What the desktop says of the user's wish; nothing when it says nothing.
    void adopt(std::optional<bool> prefersDark);

    [[nodiscard]] static QPalette dark();

private:
    QPalette m_own; // as Qt has found it
};

} // namespace vellumor
