#pragma once

#include "support/TempFolder.h"
#include "support/loop_watch/LoopReport.h"
#include "support/private_bus/ChildProcess.h"

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace vellumor::test {

// The real program in a home of its own: no bus, no screen and no account but those that a test
// adds. At the end it looks, for each start, whether the event loop of the program's main thread
// has always turned; not so where loop_watch is not built.
struct ProgramWorld {
    // For how long the main thread may be at something else.
    static constexpr std::chrono::microseconds longestTurn = std::chrono::milliseconds(50);
    // The same while it joins the system bus: Qt lets it wait there for answers of other processes,
    // which on a busy machine come late.
    static constexpr std::chrono::microseconds longestJoining = std::chrono::seconds(1);

    ProgramWorld() = default;
    ProgramWorld(const ProgramWorld&) = delete;
    ProgramWorld& operator=(const ProgramWorld&) = delete;
    ~ProgramWorld();

    TempFolder folder;
    std::string home = folder.makeFolder("home");
    std::vector<std::string> arguments = {VELLUMOR_PROGRAM};
    std::string runtimeFolder = makeRuntimeFolder();
    Environment environment = {{"HOME", home},
                               {"LC_ALL", "C.UTF-8"},
                               {"PATH", "/usr/bin:/bin"},
                               {"XDG_RUNTIME_DIR", runtimeFolder}};

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
    // Lets the event loop turn until it is so; false when it has not come about within ten seconds.
    [[nodiscard]] static bool waitUntil(const std::function<bool()>& isSo);
    // To be called when the program that was started last has joined the system bus: from then on
    // it has the ordinary limit.
    void endJoining() const;
    // What loop_watch has seen of the last start.
    [[nodiscard]] LoopReport loopReport() const;
    // Every file in the home, by its path from there.
    [[nodiscard]] std::vector<std::string> filesInHome() const;
    [[nodiscard]] bool hasFile(const std::string& pathFromHome) const;

    // The one reading that the program shares with its sibling; empty without one.
    [[nodiscard]] std::string sharedReading() const;
    // Makes it one of `longAgo`, with more keys where `more` says so, each with a comma after it.
    void makeSharedReadingOld(const std::string& more = "") const;
    static constexpr std::string_view longAgo = "2026-01-01T00:00:00.000Z";

private:
    void expectTurning(const std::string& reportFile, std::chrono::microseconds limit) const;
    [[nodiscard]] Environment watchedEnvironment(const std::string& reportFile) const;
    [[nodiscard]] std::string sharedFile() const;
    [[nodiscard]] std::string makeRuntimeFolder() const; // one that Qt trusts

    mutable std::vector<std::string> m_loopReports; // names of files, one for each start
};

} // namespace vellumor::test
