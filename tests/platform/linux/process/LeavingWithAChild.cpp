// Ends while a child process of its own is still running, as the program does when its session
// ends: LeavingWithAChild FILE, where the child writes its process id.
#include "async/LiveClock.h"
#include "platform/linux/QtProcessRunner.h"

#include <QCoreApplication>

#include <sys/stat.h>

#include <memory>

namespace vellumor {
namespace {

Task<> runAndNote(ProcessRunner& runner, ProcessRequest request)
{
    co_await runner.run(std::move(request));
    std::exit(3); // there is nobody left to be told
}

int leave(int argc, char** argv)
{
    if (argc != 2)
        return 2;
    const std::string file = argv[1];
    QCoreApplication application(argc, argv);
    LiveClock clock;
    QtProcessRunner runner(clock);
    ProcessRequest request;
    request.program = "/bin/sh";
    request.arguments = {"-c", "echo $$ >\"$1\"; exec sleep 60", "sh", file};
    request.workingDirectory = "/";
    request.environment = {{"PATH", "/usr/bin:/bin"}};
    request.timeLimit = std::chrono::seconds(60);
    request.outputLimit = 100;
    static Task<> task = runAndNote(runner, request);
    std::unique_ptr<Alarm> alarm;
    std::function<void()> quitWhenItRuns = [&] {
        struct stat status {};
        if (::stat(file.c_str(), &status) == 0 && status.st_size > 0)
            QCoreApplication::quit();
        else
            alarm = clock.after(std::chrono::milliseconds(5), quitWhenItRuns);
    };
    alarm = clock.after(std::chrono::milliseconds(0), quitWhenItRuns); // once the loop turns
    return QCoreApplication::exec();
}

} // namespace
} // namespace vellumor

int main(int argc, char** argv)
{
    return vellumor::leave(argc, argv);
}
