#pragma once

#include "async/Task.h"

#include <string>

namespace vellumor {

// What the program asks the desktop to open for the user. Main thread only, which waits for
// nothing. Each gives true once it is open, as far as can be known, and false when there is nothing
// to open it with.
class DesktopActions {
public:
    virtual ~DesktopActions() = default;

    // A new window of the user's terminal.
    [[nodiscard]] virtual Task<bool> openTerminal() = 0;
    // The folder, in the file manager; of a file, its folder with the file marked. Where nothing is
    // at `path`, which is absolute, the nearest folder above it.
    [[nodiscard]] virtual Task<bool> showFolder(std::string path) = 0;
    // A page of http or https, in the browser; nothing else is opened.
    [[nodiscard]] virtual Task<bool> openPage(std::string url) = 0;
};

} // namespace vellumor
