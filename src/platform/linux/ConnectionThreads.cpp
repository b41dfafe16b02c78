#include "platform/linux/ConnectionThreads.h"

#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>
#include <thread>

namespace vellumor {

namespace {

namespace fs = std::filesystem;

// Of QNetworkAccessManager, as far as the system's names of threads reach.
constexpr const char* connectionThread = "QNetworkAccessM";

bool isConnectionThread(const fs::directory_entry& task)
{
    std::ifstream file(task.path() / "comm");
    std::string name;
    return std::getline(file, name) && name == connectionThread;
}

bool hasConnectionThread()
{
    std::error_code failure;
    fs::directory_iterator task("/proc/self/task", failure);
    for (; !failure && task != fs::directory_iterator(); task.increment(failure)) {
        if (isConnectionThread(*task))
            return true;
    }
    return false;
}

} // namespace

void awaitConnectionThreads(std::chrono::milliseconds limit)
{
    const auto end = std::chrono::steady_clock::now() + limit;
    while (hasConnectionThread() && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

} // namespace vellumor
