#include "integration/ProgramWorld.h"

#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTimer>

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

namespace vellumor::test {

using namespace std::chrono_literals;

namespace {

// Does what comes, and leaves the processor to others while nothing does.
void turnLoop()
{
    QEventLoop loop;
    QTimer::singleShot(5ms, Qt::PreciseTimer, &loop, &QEventLoop::quit);
    loop.exec();
}

} // namespace

ProgramWorld::~ProgramWorld()
{
    for (const std::string& name : m_loopReports)
        expectTurning(name, longestTurn);
}

void ProgramWorld::endJoining() const
{
    expectTurning(m_loopReports.back(), longestJoining);
    forgetLongest(folder.file(m_loopReports.back()));
}

void ProgramWorld::expectTurning(const std::string& reportFile,
                                 std::chrono::microseconds limit) const
{
    const LoopReport report = readLoopReport(folder.file(reportFile)).value_or(LoopReport());
    EXPECT_LE(report.longestMicroseconds, static_cast<std::uint64_t>(limit.count()))
        << "microseconds in which the program's event loop stood still: turn " << report.longestTurn
        << " of " << report.turns << ", " << reportFile;
}

void ProgramWorld::signIn(const std::string& configDirName, std::string_view token) const
{
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    const auto later = std::chrono::duration_cast<std::chrono::milliseconds>(now + 8h).count();
    folder.put("home/" + configDirName + "/.credentials.json",
               R"({"claudeAiOauth":{"accessToken":")" + std::string(token) + R"(","expiresAt":)" +
                   std::to_string(later) + "}}");
}

std::unique_ptr<ChildProcess> ProgramWorld::start(const std::string& logName) const
{
    ChildProcess::Command command;
    command.arguments = arguments;
    m_loopReports.push_back("loop-" + std::to_string(m_loopReports.size() + 1) + "-" + logName);
    command.environment = watchedEnvironment(folder.file(m_loopReports.back()));
    command.outputFile = folder.file(logName);
    return std::make_unique<ChildProcess>(command);
}

Environment ProgramWorld::watchedEnvironment([[maybe_unused]] const std::string& reportFile) const
{
    Environment watched = environment;
    watched.emplace("VELLUMOR_ONBOARDING", "skip"); // a window to build, that nobody looks at
#ifdef VELLUMOR_LOOP_WATCH
    std::string& preloaded = watched["LD_PRELOAD"]; // after ours, what the test has put there
    preloaded = preloaded.empty() ? VELLUMOR_LOOP_WATCH : VELLUMOR_LOOP_WATCH ":" + preloaded;
    watched[LoopReport::variable] = reportFile;
#endif
    return watched;
}

int ProgramWorld::waitForEnd(ChildProcess& program)
{
    const QDeadlineTimer limit(30s);
    while (!limit.hasExpired()) {
        if (const auto status = program.wait(0ms))
            return *status;
        turnLoop();
    }
    return -1;
}

int ProgramWorld::run(const std::string& logName) const
{
    return waitForEnd(*start(logName));
}

bool ProgramWorld::waitForLog(std::string_view text, const std::string& logName) const
{
    return waitUntil([&] { return log(logName).find(text) != std::string::npos; });
}

bool ProgramWorld::waitUntil(const std::function<bool()>& isSo)
{
    const QDeadlineTimer limit(10s);
    while (!isSo() && !limit.hasExpired())
        turnLoop();
    return isSo();
}

std::string ProgramWorld::log(const std::string& logName) const
{
    return contentsOf(folder.file(logName));
}

LoopReport ProgramWorld::loopReport() const
{
    return readLoopReport(folder.file(m_loopReports.back())).value_or(LoopReport());
}

std::vector<std::string> ProgramWorld::filesInHome() const
{
    std::vector<std::string> files;
    for (const std::string& path : filesBelow(home))
        files.push_back(path.substr(home.size() + 1));
    std::sort(files.begin(), files.end());
    return files;
}

bool ProgramWorld::hasFile(const std::string& pathFromHome) const
{
    const auto files = filesInHome();
    return std::find(files.begin(), files.end(), pathFromHome) != files.end();
}

std::string ProgramWorld::sharedFile() const
{
    for (const std::string& file : filesInHome()) {
        if (file.find("usage-cache/") != std::string::npos && file.ends_with(".json"))
            return home + "/" + file;
    }
    return {};
}

std::string ProgramWorld::sharedReading() const
{
    return contentsOf(sharedFile());
}

void ProgramWorld::makeSharedReadingOld(const std::string& more) const
{
    constexpr std::string_view key = "\"fetchedAt\": \"";
    std::string reading = sharedReading();
    reading.replace(reading.find(key) + key.size(), longAgo.size(), longAgo);
    std::ofstream(sharedFile()) << reading.insert(1, more);
}

std::string ProgramWorld::makeRuntimeFolder() const
{
    const std::string path = folder.makeFolder("run");
    std::filesystem::permissions(path, std::filesystem::perms::owner_all);
    return path;
}

} // namespace vellumor::test
