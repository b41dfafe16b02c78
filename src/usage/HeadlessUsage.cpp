#include "usage/HeadlessUsage.h"

#include "store/DiskPath.h"
#include "store/FileStore.h"
#include "usage/ClaudeBinaryFinder.h"
#include "usage/TokenReviver.h"

namespace vellumor {

namespace {

constexpr std::chrono::seconds usageTimeLimit{120};

} // namespace

HeadlessUsage::HeadlessUsage(ProcessRunner& processes, Worker& worker, Setting setting)
    : m_processes(processes)
    , m_worker(worker)
    , m_setting(std::move(setting))
{
}

Task<int> HeadlessUsage::spawnUsage(std::string binary, std::string configDir, std::string workDir)
{
    ProcessRequest request;
    // Claude Code is to work in the directory that is there, not to make another one beside it.
    auto prepare = [dir = configDir, workDir] {
        FileStore().ensureDirectory(workDir);
        return DiskPath::spelled(dir);
    };
    const std::string spelled = co_await m_worker.run(std::move(prepare));
    request.program = m_setting.loginShell;
    request.arguments = {"-ilc", TokenReviver::usageCommand(binary, spelled, m_setting.home)};
    request.environment = childEnvironment(m_setting.environment);
    request.workingDirectory = std::move(workDir);
    request.timeLimit = usageTimeLimit;
    const ProcessResult result = co_await m_processes.run(std::move(request));
    co_return result.status;
}

} // namespace vellumor
