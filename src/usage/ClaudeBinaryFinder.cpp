#include "usage/ClaudeBinaryFinder.h"

#include "base/Text.h"
#include "store/DiskPath.h"
#include "usage/ClaudeBinary.h"

#include <algorithm>

namespace vellumor {

namespace {

constexpr std::chrono::seconds shellTimeLimit{10};
constexpr std::size_t outputLimit = std::size_t{64} * 1024; // a path, and what start-up files say

// A shell may have answered with an alias or a bare word.
std::optional<std::string> firstExecutable(const std::vector<std::string>& paths)
{
    const auto found = std::find_if(paths.begin(), paths.end(), DiskPath::isProgram);
    return found == paths.end() ? std::nullopt : std::optional(*found);
}

} // namespace

Environment childEnvironment(Environment environment)
{
    std::erase_if(environment,
                  [](const auto& variable) { return variable.first.starts_with("VELLUMOR_"); });
    return environment;
}

ClaudeBinaryFinder::ClaudeBinaryFinder(ProcessRunner& processes, Worker& worker,
                                       PersistedClaudePath& persisted, Setting setting)
    : m_processes(processes)
    , m_worker(worker)
    , m_persisted(persisted)
    , m_setting(std::move(setting))
{
}

Task<std::optional<std::string>> ClaudeBinaryFinder::find(std::optional<std::string> preference)
{
    ClaudeBinary::Hints hints;
    hints.override = value(m_setting.environment, "VELLUMOR_CLAUDE_PATH");
    hints.preference = std::move(preference);
    hints.whichPath = co_await loginShellWhich();
    auto search = [this, hints = std::move(hints)]() mutable {
        hints.home = DiskPath::spelled(m_setting.home);
        hints.persisted = m_persisted.read();
        hints.nvmPaths = ClaudeBinary::globbedNvmPaths(hints.home);
        hints.bundledPaths = ClaudeBinary::globbedBundledPaths(hints.home);
        return firstExecutable(ClaudeBinary::candidates(hints));
    };
    co_return co_await m_worker.run(std::move(search));
}

Task<std::optional<std::string>>
ClaudeBinaryFinder::resolveClaudeBinary(std::optional<std::string> preference)
{
    auto found = co_await find(preference);
    if (found && found != preference) {
        auto note = [this, path = *found] { m_persisted.note(path); };
        co_await m_worker.run(std::move(note));
    }
    co_return found;
}

// What the search path of the user's own shell leads to. It may be an alias or a bare word.
Task<std::optional<std::string>> ClaudeBinaryFinder::loginShellWhich()
{
    ProcessRequest request;
    request.program = m_setting.loginShell;
    request.arguments = {"-ilc", "command -v claude"};
    request.environment = childEnvironment(m_setting.environment);
    auto findSpelling = [dir = m_setting.workingDirectory] { return DiskPath::spelled(dir); };
    request.workingDirectory = co_await m_worker.run(std::move(findSpelling));
    request.timeLimit = shellTimeLimit;
    request.outputLimit = outputLimit;
    const ProcessResult result = co_await m_processes.run(std::move(request));
    const std::string_view path = Text::trimmed(result.output);
    if (result.status != 0 || result.isOutputCut || path.empty() || !Text::isValidUtf8(path))
        co_return std::nullopt;
    co_return std::string(path);
}

} // namespace vellumor
