#include "platform/linux/crash/JournalQuery.h"

#include <fmt/format.h>

#include <algorithm>

namespace vellumor::JournalQuery {

namespace {

constexpr const char* coreDumpMessage = "fc2e22bc6ee647b6b90729ab34a250b1"; // systemd's own
constexpr std::size_t longestProcessName = 15; // the kernel keeps no more of it

std::vector<std::string> common(const char* fields)
{
    return {"--output=json", "--all", "--quiet", "--no-pager",
            std::string("--output-fields=").append(fields)};
}

} // namespace

std::vector<std::string> crashes(const std::string& program, uid_t user, Instant since)
{
    const auto seconds = std::chrono::floor<std::chrono::seconds>(since).time_since_epoch().count();
    auto arguments = common("MESSAGE,COREDUMP_PID,COREDUMP_EXE,COREDUMP_SIGNAL,"
                            "COREDUMP_SIGNAL_NAME,COREDUMP_TIMESTAMP");
    arguments.insert(arguments.end(),
                     {"--reverse", fmt::format("--lines={}", maxCrashes),
                      fmt::format("--since=@{}", std::max(seconds, decltype(seconds){0})),
                      fmt::format("MESSAGE_ID={}", coreDumpMessage), fmt::format("_UID={}", user),
                      fmt::format("COREDUMP_UID={}", user),
                      "COREDUMP_COMM=" + program.substr(0, longestProcessName)});
    return arguments;
}

std::vector<std::string> wordsOf(const CoreDump& dump, uid_t user)
{
    auto arguments = common("_PID");
    arguments.insert(arguments.end(), {"_BOOT_ID=" + dump.bootId, fmt::format("_PID={}", dump.pid),
                                       fmt::format("_UID={}", user)});
    return arguments;
}

} // namespace vellumor::JournalQuery
