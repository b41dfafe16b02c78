#include "platform/linux/crash/JournalCrashImporter.h"

#include "platform/linux/crash/JournalQuery.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

namespace vellumor {

namespace {

constexpr std::chrono::seconds timeLimit{10};
// What twenty crashes of a program with many threads come to, and more.
constexpr std::size_t crashesLimit = std::size_t{8} * 1024 * 1024;
constexpr std::size_t wordsLimit = std::size_t{16} * 1024; // the first line is enough

// Takes the next line off the front of `text`; an end without a line feed is no line.
std::optional<std::string_view> takeLine(std::string_view& text)
{
    const auto end = text.find('\n');
    if (end == std::string_view::npos)
        return std::nullopt;
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(end + 1);
    return line;
}

std::string fileNameOf(const std::string& path)
{
    return path.substr(path.rfind('/') + 1); // npos + 1 is 0
}

// Since when the file is what it is; nothing when it cannot be told.
std::optional<Instant> unchangedSince(const std::string& path)
{
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0)
        return std::nullopt;
    return Instant(std::chrono::seconds(status.st_ctim.tv_sec));
}

} // namespace

JournalCrashImporter::JournalCrashImporter(ProcessRunner& processes, Worker& worker,
                                           const FileStore& files, Setting setting)
    : m_processes(processes)
    , m_worker(worker)
    , m_setting(std::move(setting))
    , m_folder(files, m_setting.reportFolder)
{
}

Task<int> JournalCrashImporter::importReports(Instant since)
{
    auto query = JournalQuery::crashes(fileNameOf(m_setting.executable), ::getuid(), since);
    ProcessResult answer = co_await ask(std::move(query), crashesLimit);
    if (answer.output.empty())
        co_return 0;
    auto select = [this, since, text = std::move(answer.output)] {
        return newCrashes(text, since);
    };
    std::vector<Crash> crashes = co_await m_worker.run(std::move(select));
    if (crashes.empty())
        co_return 0;
    crashes = co_await withLaunches(std::move(crashes));
    auto write = [this, crashes = std::move(crashes)] {
        int written = 0;
        for (const Crash& crash : crashes)
            written += m_folder.write(crash.dump, crash.known) ? 1 : 0;
        m_folder.trim();
        return written;
    };
    co_return co_await m_worker.run(std::move(write));
}

Task<ProcessResult> JournalCrashImporter::ask(std::vector<std::string> arguments,
                                              std::size_t outputLimit)
{
    ProcessRequest request;
    request.program = m_setting.journalctl;
    request.arguments = std::move(arguments);
    request.environment = {{"LC_ALL", "C.UTF-8"}, {"PATH", "/usr/bin:/bin"}};
    request.workingDirectory = "/";
    request.timeLimit = timeLimit;
    request.outputLimit = outputLimit;
    co_return co_await m_processes.run(std::move(request));
}

// The journal keeps no start of a process. This program says something at its start, though, which
// the journal has where the session hands it over.
Task<std::vector<JournalCrashImporter::Crash>>
JournalCrashImporter::withLaunches(std::vector<Crash> crashes)
{
    for (Crash& crash : crashes) {
        auto query = JournalQuery::wordsOf(crash.dump, ::getuid());
        const ProcessResult answer = co_await ask(std::move(query), wordsLimit);
        std::string_view rest = answer.output;
        const auto line = takeLine(rest);
        if (line)
            crash.known.launchedAt = journalTime(*line);
        else if (answer.status != 0)
            break; // it would not answer for the others either
    }
    co_return std::move(crashes);
}

std::vector<JournalCrashImporter::Crash> JournalCrashImporter::newCrashes(std::string_view answer,
                                                                          Instant since) const
{
    const auto unchanged = unchangedSince(m_setting.executable);
    std::vector<Crash> crashes;
    for (CoreDump& dump : m_folder.withoutReport(crashesIn(answer, since))) {
        Crash crash{std::move(dump), {}};
        if (crash.dump.executable.empty())
            crash.dump.executable = m_setting.executable;
        // What has crashed before an update was another version, nobody knows which.
        if (unchanged && *unchanged <= crash.dump.crashedAt)
            crash.known.version = m_setting.version;
        crashes.push_back(std::move(crash));
    }
    return crashes;
}

std::vector<CoreDump> JournalCrashImporter::crashesIn(std::string_view answer, Instant since)
{
    // The journal tells the moment of a crash in whole seconds.
    const Instant earliest = std::chrono::floor<std::chrono::seconds>(since);
    std::vector<CoreDump> dumps;
    while (const auto line = takeLine(answer)) {
        auto dump = CoreDump::decode(*line);
        if (dump && dump->crashedAt >= earliest)
            dumps.push_back(*std::move(dump));
    }
    std::reverse(dumps.begin(), dumps.end());
    return dumps;
}

} // namespace vellumor
