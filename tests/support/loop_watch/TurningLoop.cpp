// A program with an event loop that turns for a while, does one thing in it, and ends.
// Usage: turning_loop DEED MILLISECONDS. Prints how many milliseconds the deed took.

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTimer>

#include <poll.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <map>
#include <string>
#include <thread>

namespace {

using namespace std::chrono_literals;
using std::chrono::milliseconds;

void waitForAPipe(milliseconds time)
{
    std::array<int, 2> ends{};
    if (::pipe(ends.data()) != 0)
        std::abort();
    pollfd reading{ends[0], POLLIN, 0};
    ::poll(&reading, 1, static_cast<int>(time.count()));
}

std::chrono::nanoseconds processorTime()
{
    timespec used{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &used);
    return std::chrono::seconds(used.tv_sec) + std::chrono::nanoseconds(used.tv_nsec);
}

// Until the thread has had so much more of a processor.
void work(milliseconds time)
{
    const auto end = processorTime() + time;
    while (processorTime() < end)
        continue;
}

void letTheLoopWait(milliseconds time)
{
    QEventLoop loop;
    QTimer::singleShot(time, &loop, &QEventLoop::quit);
    loop.exec();
}

void letAThreadSleep(milliseconds time)
{
    std::thread([time] { std::this_thread::sleep_for(time); }).detach();
    letTheLoopWait(time);
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const std::map<std::string, void (*)(milliseconds)> deeds = {
        {"sleep", [](milliseconds time) { std::this_thread::sleep_for(time); }},
        {"pipe", waitForAPipe},
        {"work", work},
        {"loop", letTheLoopWait},
        {"thread", letAThreadSleep},
        {"start", [](milliseconds) {}},
    };
    const std::string deed = argv[1];
    const milliseconds time(std::stoi(argv[2]));
    if (deed == "start")
        std::this_thread::sleep_for(time);
    QTimer::singleShot(10ms, [&] {
        QElapsedTimer timer;
        timer.start();
        deeds.at(deed)(time);
        std::printf("%lld\n", timer.elapsed());
        QTimer::singleShot(10ms, &application, &QCoreApplication::quit);
    });
    return QCoreApplication::exec();
}
