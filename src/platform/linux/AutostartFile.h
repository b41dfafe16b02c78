#pragma once

#include "base/Environment.h"
#include "platform/LaunchAtLogin.h"
#include "store/FileCalls.h"

namespace vellumor {

// LaunchAtLogin by a desktop entry in the user's autostart folder. Every desktop reads it there,
// and shows it to the user in its own settings. Switched off, the file goes, unless it holds
// what somebody else wrote: then it stays and is hidden.
//
// The folder is not this program's: its mode is left alone, and so is that of a file that is there.
// A link is kept, and what it leads to is written.
class AutostartFile final : public LaunchAtLogin {
public:
    // `configFolder` is Folders::config; `program` what is to be started, as told by ownProgram.
    AutostartFile(const std::string& configFolder, std::string program);
    // `calls` outlives this.
    AutostartFile(const std::string& configFolder, std::string program, const FileCalls& calls);

    [[nodiscard]] bool isEnabled() const override;
    [[nodiscard]] std::optional<std::string> setEnabled(bool on) override;

    [[nodiscard]] const std::string& path() const { return m_path; }

private:
    [[nodiscard]] std::optional<std::string> remove() const;
    [[nodiscard]] std::optional<std::string> save(const std::string& text) const;

    const FileCalls& m_calls;
    std::string m_path;
    std::string m_program;
};

// The absolute path of this program: the file that it was unpacked from where it runs out of an
// AppImage, else its executable. Asked once at the start: an update may replace the file later.
[[nodiscard]] std::string ownProgram(const Environment& environment);
// What people start to have this program: the small one beside it that bears its name, where both
// are installed, else the program itself.
[[nodiscard]] std::string programToStart(const Environment& environment);
[[nodiscard]] std::string programToStart(const std::string& own);
// The same for an executable at `running`.
[[nodiscard]] std::string ownProgram(const Environment& environment, const std::string& running);

} // namespace vellumor
