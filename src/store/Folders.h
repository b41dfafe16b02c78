#pragma once

#include "base/Environment.h"

#include <string>

namespace vellumor {

// Where the user's things lie. All paths are absolute and without a trailing slash.
struct Folders {
    std::string home;   // in composed Unicode (NFC), links not resolved
    std::string data;   // XDG_DATA_HOME, else ~/.local/share
    std::string config; // XDG_CONFIG_HOME, else ~/.config

    [[nodiscard]] std::string vellumor() const
    {
        return data + "/Vellumor";
    } // this program's own files
    [[nodiscard]] std::string quorle() const { return data + "/Quorle"; } // shared with the sibling
    [[nodiscard]] std::string crashReports() const { return vellumor() + "/DiagnosticReports"; }

    // From HOME, else the password database; XDG variables count only when they are absolute.
    [[nodiscard]] static Folders fromEnvironment(const Environment& environment);
};

} // namespace vellumor
