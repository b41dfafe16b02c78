#include "simulation/Sibling.h"

#include "base/Format.h"
#include "base/Json.h"
#include "usage/model/Usage.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <variant>

namespace vellumor::simulation {

namespace {

using namespace std::chrono_literals;

constexpr auto slot = 60s;
constexpr double freshness = 90.0; // seconds
constexpr auto backoff = 300s;

std::string contents(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

} // namespace

Sibling::Sibling(Timeline& timeline, const Clock& clock, const FileStore& files,
                 const Folders& folders, Home& home, Endpoint& endpoint)
    : m_timeline(timeline)
    , m_clock(clock)
    , m_files(files)
    , m_heartbeatFile(folders.quorle() + "/poller.json")
    , m_cache(files, folders.quorle() + "/usage-cache")
    , m_home(home)
    , m_endpoint(endpoint)
{
}

void Sibling::start()
{
    m_isRunning = true;
    m_timeline.after(31s, [this] { tick(); });
}

void Sibling::tick()
{
    if (!m_isRunning)
        return;
    m_timeline.after(slot, [this] { tick(); });
    if (m_timeline.isFrozen() || !m_isOnline || m_home.size() == 0)
        return;
    claim();
    m_next = (m_next + 1) % m_home.size();
    if (m_home.isThere(m_next))
        poll(m_next);
}

void Sibling::poll(int account)
{
    const std::string configDir = m_home.configDir(account);
    const Instant now = m_clock.now();
    const auto shared = m_cache.read(configDir);
    if (shared && shared->backoffUntil && *shared->backoffUntil > now)
        return;
    if (shared && secondsBetween(shared->fetchedAt, now) < freshness)
        return;
    const HttpAnswer answer = m_endpoint.answer(m_home.token(account), Endpoint::Caller::sibling);
    if (answer.status == 429) {
        m_cache.setBackoff(now + backoff, configDir);
        return;
    }
    auto decoded = Usage::decode(answer.body, now);
    if (const auto* usage = std::get_if<Usage>(&decoded); usage != nullptr && answer.status == 200)
        m_cache.write(*usage, configDir, std::nullopt);
}

void Sibling::claim() const
{
    const Json record = {{"schemaVersion", 1},
                         {"source", "sibling"},
                         {"intervalSeconds", 60.0 * m_home.size()},
                         {"updatedAt", Format::isoFractional(m_clock.now())},
                         {"pid", 4242}};
    m_files.write(record.dump(), m_heartbeatFile);
}

Vandal::Vandal(std::mt19937& random, std::string sharedFolder)
    : m_random(random)
    , m_folder(std::move(sharedFolder))
{
}

void Vandal::strike()
{
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(m_folder)) {
        if (entry.is_regular_file())
            files.push_back(entry.path());
    }
    if (files.empty())
        return;
    std::sort(files.begin(), files.end()); // the order of a folder is nobody's
    const auto& victim = files[m_random() % files.size()];
    if (m_random() % 8 == 0)
        std::filesystem::remove(victim);
    else
        std::ofstream(victim, std::ios::binary | std::ios::trunc) << nonsense(contents(victim));
}

std::string Vandal::nonsense(const std::string& present)
{
    static const std::array<const char*, 12> texts = {
        "",
        "null",
        "[]",
        "{}",
        "{\"schemaVersion\": 99}",
        "{\"schemaVersion\": \"two\", \"fetchedAt\": 7, \"limits\": {}}",
        "{\"schemaVersion\": 1, \"source\": \"\", \"intervalSeconds\": 1e308, \"updatedAt\": "
        "1e300}",
        "{\"schemaVersion\": 1, \"source\": \"x\", \"intervalSeconds\": -5, \"updatedAt\": "
        "\"now\"}",
        "{\"accounts\": [1, null, {\"configDir\": 5}], \"schemaVersion\": 1}",
        "{\"accounts\": {\"/tmp\": {\"name\": \"\\u0000\"}}, \"schemaVersion\": 1}",
        "{\"fetchedAt\": \"9999-12-31T23:59:59.999Z\", \"schemaVersion\": 2, \"windows\": [{}]}",
        "\xff\xfe\x00\x01",
    };
    if (present.size() > 2 && m_random() % 3 == 0) // half-written
        return present.substr(0, m_random() % present.size());
    if (!present.empty() && m_random() % 3 == 0) { // one byte gone wrong
        std::string changed = present;
        changed[m_random() % changed.size()] = static_cast<char>(m_random() % 256);
        return changed;
    }
    return texts[m_random() % texts.size()];
}

} // namespace vellumor::simulation
