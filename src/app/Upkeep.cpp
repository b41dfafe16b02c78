#include "app/Upkeep.h"

#include "app/BuildSettings.h"
#include "base/SecureRandom.h"
#include "base/Version.h"

namespace vellumor {

namespace {

QtHttpTransport::Options withoutRedirects()
{
    QtHttpTransport::Options options;
    options.redirects = QtHttpTransport::Redirects::refuse;
    return options;
}

std::vector<std::string> failedNames(const std::vector<DataRemover::Result>& results)
{
    std::vector<std::string> names;
    for (const DataRemover::Result& result : results) {
        if (result.outcome == DataRemover::Outcome::failed)
            names.push_back(result.target.name);
    }
    return names;
}

} // namespace

Upkeep::Upkeep(const Environment& environment, const Folders& folders, Parts parts)
    : m_parts(std::move(parts))
    , m_data(folders.data)
    , m_autostart(folders.config, programToStart(environment))
    , m_transport(withoutRedirects())
    , m_updateStore(m_parts.files, folders.vellumor() + "/updates.json", m_parts.write)
    , m_checker(m_transport, m_updateStore, m_parts.clock,
                {.feed = BuildSettings::updateFeed,
                 .key = BuildSettings::updateKey,
                 .website = BuildSettings::website,
                 .version = std::string(version)})
    , m_schedule(m_checker, m_updateStore, m_parts.clock, SecureRandom::below,
                 [this](const UpdateResult& result) {
                     if (m_told)
                         m_told(result);
                 })
{
}

Task<bool> Upkeep::isLaunchedAtLogin()
{
    auto look = [this] { return m_autostart.isEnabled(); };
    co_return co_await m_parts.storeWorker.run(std::move(look));
}

Task<std::optional<std::string>> Upkeep::setLaunchedAtLogin(bool on)
{
    auto change = [this, on] { return m_autostart.setEnabled(on); };
    co_return co_await m_parts.storeWorker.run(std::move(change));
}

// What is due to be written is written before, and nothing after it: a fetch that comes back cannot
// bring a folder back.
Task<std::vector<std::string>> Upkeep::removeAllData()
{
    m_parts.stopPolling();
    co_await setLaunchedAtLogin(false);
    auto remove = [this] {
        m_parts.fileCalls.seal();
        return DataRemover::execute(DataRemover::targets(m_data));
    };
    const auto results = co_await m_parts.storeWorker.run(std::move(remove));
    auto left = failedNames(results);
    if (left.empty())
        m_parts.terminate();
    co_return left;
}

} // namespace vellumor
