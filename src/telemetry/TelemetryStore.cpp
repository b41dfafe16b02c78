#include "telemetry/TelemetryStore.h"

#include "store/FileReader.h"

#include <cassert>

namespace vellumor {

namespace {

std::optional<TelemetryConfig> read(const std::string& fileURL, Instant now)
{
    const FileContents contents = readFile(fileURL);
    if (contents.status != ReadStatus::ok)
        return std::nullopt;
    return TelemetryConfig::decode(contents.bytes, now);
}

} // namespace

TelemetryStore::TelemetryStore(const FileStore& files, const Clock& clock, std::string fileURL,
                               RunJob runJob)
    : m_files(files)
    , m_clock(clock)
    , m_fileURL(std::move(fileURL))
    , m_runJob(std::move(runJob))
{
    const Instant now = m_clock.now();
    if (auto known = read(m_fileURL, now))
        m_current = *std::move(known);
    else
        setCurrent(TelemetryConfig::fresh(now));
}

TelemetryConfig TelemetryStore::load(const std::string& fileURL, Instant now)
{
    if (auto known = read(fileURL, now))
        return *std::move(known);
    return TelemetryConfig::fresh(now);
}

const TelemetryConfig& TelemetryStore::current() const
{
    assert(std::this_thread::get_id() == m_owner);
    return m_current;
}

void TelemetryStore::setCurrent(TelemetryConfig config)
{
    assert(std::this_thread::get_id() == m_owner);
    m_current = std::move(config);
    persist();
}

void TelemetryStore::update(const std::function<void(TelemetryConfig&)>& change)
{
    assert(std::this_thread::get_id() == m_owner);
    change(m_current);
    persist();
}

void TelemetryStore::noteServed(std::string_view layer)
{
    update([&](TelemetryConfig& config) { addOne(config.servedBy[std::string(layer)]); });
}

void TelemetryStore::resetIdentity()
{
    TelemetryConfig renewed = TelemetryConfig::fresh(m_clock.now());
    renewed.diagnosticsEnabled = current().diagnosticsEnabled;
    renewed.productAnalyticsEnabled = current().productAnalyticsEnabled;
    renewed.caps = current().caps;
    setCurrent(std::move(renewed));
}

void TelemetryStore::persist()
{
    m_current.schemaVersion = TelemetryConfig::currentVersion; // of what is written
    if (const auto bytes = m_current.encode())
        m_runJob(
            [&files = m_files, file = m_fileURL, bytes = *bytes] { files.write(bytes, file); });
}

} // namespace vellumor
