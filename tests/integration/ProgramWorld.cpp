#include "integration/ProgramWorld.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>

#include <algorithm>

namespace vellumor::test {

using namespace std::chrono_literals;

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
    command.arguments = {VELLUMOR_PROGRAM};
    command.environment = environment;
    command.outputFile = folder.file(logName);
    return std::make_unique<ChildProcess>(command);
}

int ProgramWorld::waitForEnd(ChildProcess& program)
{
    const QDeadlineTimer limit(30s);
    while (!limit.hasExpired()) {
        if (const auto status = program.wait(0ms))
            return *status;
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 5);
    }
    return -1;
}

int ProgramWorld::run(const std::string& logName) const
{
    return waitForEnd(*start(logName));
}

bool ProgramWorld::waitForLog(std::string_view text, const std::string& logName) const
{
    const QDeadlineTimer limit(10s);
    while (!limit.hasExpired()) {
        if (log(logName).find(text) != std::string::npos)
            return true;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    }
    return false;
}

std::string ProgramWorld::log(const std::string& logName) const
{
    return contentsOf(folder.file(logName));
}

std::vector<std::string> ProgramWorld::filesInHome() const
{
    std::vector<std::string> files;
    for (const std::string& path : filesBelow(home))
        files.push_back(path.substr(home.size() + 1));
    std::sort(files.begin(), files.end());
    return files;
}

} // namespace vellumor::test
