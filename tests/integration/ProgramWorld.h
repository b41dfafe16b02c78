#pragma once

#include "support/TempFolder.h"
#include "support/private_bus/ChildProcess.h"

#include <chrono>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace vellumor::test {

// The real program in a home of its own: no bus, no screen and no account but those that a test
// adds.
struct ProgramWorld {
    TempFolder folder;
    std::string home = folder.makeFolder("home");
    Environment environment = {{"HOME", home}, {"LC_ALL", "C.UTF-8"}, {"PATH", "/usr/bin:/bin"}};

    // A credential file with this token, valid for hours, in a config directory of the home.
    void signIn(const std::string& configDirName, std::string_view token) const;

    // Starts it; what it writes goes to `logName` in the folder.
    [[nodiscard]] std::unique_ptr<ChildProcess> start(const std::string& logName = "log") const;
    // Lets the event loop turn until it has ended; gives its exit status, or -1 after 30 seconds.
    [[nodiscard]] static int waitForEnd(ChildProcess& program);
    // Starts it and waits for its end.
    [[nodiscard]] int run(const std::string& logName = "log") const;
    // Waits until the log has the text; false after 10 seconds.
    [[nodiscard]] bool waitForLog(std::string_view text, const std::string& logName = "log") const;
    [[nodiscard]] std::string log(const std::string& logName = "log") const;
    // Every file in the home, by its path from there.
    [[nodiscard]] std::vector<std::string> filesInHome() const;
};

} // namespace vellumor::test
