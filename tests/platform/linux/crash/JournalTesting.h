#pragma once

#include "base/Instant.h"
#include "support/TempFolder.h"
#include "support/private_bus/ChildProcess.h"

#include <fmt/format.h>

#include <sys/stat.h>
#include <unistd.h>

#include <map>
#include <string>

namespace vellumor::test {

inline constexpr const char* bootId = "0123456789abcdef0123456789abcdef";
inline constexpr const char* coreDumpMessage = "fc2e22bc6ee647b6b90729ab34a250b1";

using JournalFields = std::map<std::string, std::string>;

inline std::string micros(Instant instant)
{
    return std::to_string(instant.time_since_epoch().count());
}

// What systemd-coredump tells the journal of a crash of this user's program; the moment of a crash
// is known to it in whole seconds.
inline JournalFields coreDumpEntry(Instant crashedAt, pid_t pid, const std::string& message)
{
    const auto user = std::to_string(::getuid());
    return {{"__REALTIME_TIMESTAMP", micros(crashedAt + std::chrono::milliseconds(1500))},
            {"_BOOT_ID", bootId},
            {"_UID", user},
            {"_COMM", "systemd-coredum"},
            {"MESSAGE_ID", coreDumpMessage},
            {"PRIORITY", "2"},
            {"COREDUMP_UID", user},
            {"COREDUMP_PID", std::to_string(pid)},
            {"COREDUMP_COMM", "vellumor"},
            {"COREDUMP_EXE", "/opt/vellumor/vellumor"},
            {"COREDUMP_CMDLINE", "/opt/vellumor/vellumor --secret"},
            {"COREDUMP_ENVIRON", "HOME=/home/ann\nTOKEN=example-token"},
            {"COREDUMP_SIGNAL", "11"},
            {"COREDUMP_SIGNAL_NAME", "SIGSEGV"},
            {"COREDUMP_TIMESTAMP", micros(std::chrono::floor<std::chrono::seconds>(crashedAt))},
            {"MESSAGE", message}};
}

// A line that the program itself has said.
inline JournalFields ownLine(Instant at, pid_t pid)
{
    return {{"__REALTIME_TIMESTAMP", micros(at)},
            {"_BOOT_ID", bootId},
            {"_UID", std::to_string(::getuid())},
            {"_PID", std::to_string(pid)},
            {"_COMM", "vellumor"},
            {"MESSAGE", "[main] running"}};
}

// A journal file made by systemd's own tool, and a journalctl that reads no other.
class Journal {
public:
    explicit Journal(const TempFolder& folder)
        : m_folder(folder)
    {
    }

    // To be called in the order of the entries' times.
    void add(const JournalFields& fields)
    {
        for (const auto& [name, value] : fields) {
            if (value.find('\n') == std::string::npos) {
                m_export += name + "=" + value + "\n";
                continue;
            }
            m_export += name + "\n"; // the form for what has more than one line
            for (std::size_t byte = 0; byte < 8; ++byte)
                m_export += static_cast<char>(value.size() >> (8 * byte) & 0xFFU);
            m_export += value + "\n";
        }
        m_export += "__MONOTONIC_TIMESTAMP=1000000\n\n";
    }

    // Gives the path of the journalctl.
    [[nodiscard]] std::string write() const
    {
        const std::string file = m_folder.file("system.journal");
        ::unlink(file.c_str());
        (void)runToEnd({{VELLUMOR_JOURNAL_REMOTE, "--output=" + file, "-"},
                        {{"PATH", "/usr/bin:/bin"}},
                        m_export,
                        m_folder.file("journal.log")});
        return makeScript("exec /usr/bin/journalctl --file='" + file + "' \"$@\"");
    }

    // A journalctl that does something else; its calls are counted in a file.
    [[nodiscard]] std::string makeScript(const std::string& script) const
    {
        const std::string path =
            m_folder.put("journalctl", "#!/bin/sh\necho \"$@\" >>'" + m_folder.file("calls") +
                                           "'\n" + script + "\n");
        ::chmod(path.c_str(), 0700);
        return path;
    }
    [[nodiscard]] std::string calls() const { return contentsOf(m_folder.file("calls")); }

private:
    const TempFolder& m_folder;
    std::string m_export;
};

} // namespace vellumor::test
