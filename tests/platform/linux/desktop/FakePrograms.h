#pragma once

#include "base/Environment.h"
#include "support/ProcessTesting.h"
#include "support/TempFolder.h"

#include <sys/stat.h>

#include <string>
#include <utility>

namespace vellumor::test {

// Programs under chosen names in a folder of PATH, which leave a note of how they were started.
class FakePrograms {
public:
    explicit FakePrograms(const TempFolder& folder)
        : m_folder(folder)
    {
        m_folder.makeFolder("bin");
        m_folder.makeFolder("home");
    }

    // A program that notes its arguments, a line each, and goes on with `script`.
    void put(const std::string& name, const std::string& script = "exit 0") const
    {
        const std::string note = m_folder.file(name + ".note");
        const std::string file = m_folder.put(
            "bin/" + name, "#!/bin/sh\nprintf '%s\\n' \"$@\" > " + note + ".new; /bin/mv " + note +
                               ".new " + note + "\n" + script + "\n");
        ::chmod(file.c_str(), 0755);
    }
    // The arguments that it was started with the last time; empty as long as it was not.
    [[nodiscard]] std::string note(const std::string& name) const
    {
        return contentsOf(m_folder.file(name + ".note"));
    }
    // For a program of `script` that has no end of its own: writes its process id, and waits.
    [[nodiscard]] std::string hang() const
    {
        return "echo $$ >> " + pidFile() + "; exec /bin/sleep 600";
    }
    [[nodiscard]] std::string pidFile() const { return m_folder.file("pids"); }
    [[nodiscard]] std::vector<pid_t> pids() const { return pidsIn(pidFile()); }

    [[nodiscard]] Environment environment() const
    {
        return {{"PATH", m_folder.file("bin")}, {"HOME", m_folder.file("home")}};
    }

private:
    const TempFolder& m_folder;
};

} // namespace vellumor::test
