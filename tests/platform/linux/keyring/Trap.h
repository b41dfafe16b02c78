#pragma once

#include "support/TempFolder.h"
#include "support/private_bus/PrivateBus.h"

#include <filesystem>
#include <string>

namespace vellumor::test {

// A program that must not be started, and leaves a mark when it is.
class Trap {
public:
    // `name`: the bus name for which the program would be started.
    Trap(const TempFolder& folder, const std::string& name)
        : m_name(name)
        , m_mark(folder.file(name + ".started"))
        , m_script(folder.put(name + ".sh", "touch " + m_mark + "\nexit 1\n"))
    {
    }

    // For the options of the bus. The failure tells the caller at once that there is no such
    // service.
    [[nodiscard]] PrivateBus::Activatable service() const
    {
        return {m_name, "/bin/sh " + m_script};
    }
    [[nodiscard]] bool sprung() const { return std::filesystem::exists(m_mark); }

private:
    std::string m_name;
    std::string m_mark;
    std::string m_script;
};

} // namespace vellumor::test
