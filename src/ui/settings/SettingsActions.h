#pragma once

#include <functional>
#include <string>

namespace vellumor {

// What the settings do beyond changing what the program keeps. All of it comes back at once.
struct SettingsActions {
    using Chosen = std::function<void(const std::string& path)>;

    // Let the user pick one in the desktop's own panel; `chosen` is not called when there is none.
    std::function<void(Chosen chosen)> chooseFile = {};
    std::function<void(Chosen chosen)> chooseFolder = {};
    std::function<void(const std::string& text)> copy = {}; // onto the clipboard
    std::function<void()> openTerminal = {};
    std::function<void(const char* address)> openPage = {};
};

} // namespace vellumor
