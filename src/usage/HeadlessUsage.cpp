#include "usage/HeadlessUsage.h"

#include "store/DiskPath.h"
#include "usage/ClaudeBinaryFinder.h"
#include "usage/TokenReviver.h"

namespace vellumor {

namespace {

constexpr std::chrono::seconds usageTimeLimit{120};

} // namespace

HeadlessUsage::HeadlessUsage(ProcessRunner& processes, Worker& worker, const FileStore& files,
                             Setting setting)
    : m_processes(processes)
    , m_worker(worker)
    , m_files(files)
    , m_setting(std::move(setting))
{
}

Task<int> HeadlessUsage::spawnUsage(std::string binary, std::string configDir, std::string workDir)
{
    ProcessRequest request;
    // Claude Code is to work in the directories that are there, not to make others beside them.
    auto prepare = [&files = m_files, configDir, workDir] {
        std::pair spelled(DiskPath::spelled(configDir), DiskPath::spelled(workDir));
        files.ensureDirectory(spelled.second);
        return spelled;
    };
    const auto [config, work] = co_await m_worker.run(std::move(prepare));
    request.program = m_setting.loginShell;
    request.arguments = {"-ilc", TokenReviver::usageCommand(binary, config, m_setting.home)};
    request.environment = childEnvironment(m_setting.environment);
    request.workingDirectory = work;
    request.timeLimit = usageTimeLimit;
    const ProcessResult result = co_await m_processes.run(std::move(request));
    co_return result.status;
}

} // namespace vellumor
