#include "store/PollerHeartbeatStore.h"

#include "base/Format.h"
#include "base/Json.h"
#include "base/StrictReader.h"
#include "store/FileReader.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <filesystem>

namespace vellumor {

namespace {

constexpr int schemaVersion = 1;
constexpr std::string_view ownSource = "vellumor";
constexpr double secondsTo2001 = 978307200.0; // from 1970
constexpr double toleratedClockSkew = 60.0;   // seconds
constexpr double leastCoverage = 300.0;       // seconds
constexpr double intervalsCovered = 3.0;

std::optional<Instant> readDate(const Json* json)
{
    if (json == nullptr)
        return std::nullopt;
    if (const auto text = asString(*json))
        return Format::parseISO8601(*text);
    const auto seconds = asDouble(*json);
    return seconds ? std::optional(instantFromSeconds(*seconds + secondsTo2001)) : std::nullopt;
}

} // namespace

std::optional<PollerHeartbeat> PollerHeartbeat::decode(std::string_view bytes)
{
    const auto json = parseJsonObject(bytes);
    if (!json)
        return std::nullopt;
    StrictReader reader(*json);
    PollerHeartbeat heartbeat;
    reader.required("schemaVersion", heartbeat.schemaVersion);
    reader.required("source", heartbeat.source);
    reader.required("intervalSeconds", heartbeat.intervalSeconds);
    reader.optional("pid", heartbeat.pid);
    const auto updatedAt = readDate(reader.find("updatedAt"));
    if (!reader.good() || !updatedAt)
        return std::nullopt;
    heartbeat.updatedAt = *updatedAt;
    return heartbeat;
}

std::optional<std::string> PollerHeartbeat::encode() const
{
    if (!std::isfinite(intervalSeconds))
        return std::nullopt;
    Json json = {{"schemaVersion", schemaVersion},
                 {"source", source},
                 {"intervalSeconds", intervalSeconds},
                 {"updatedAt", Format::isoFractional(updatedAt)}};
    if (pid)
        json["pid"] = *pid;
    return writeJson(std::move(json), JsonLayout::pretty);
}

PollerHeartbeatStore::PollerHeartbeatStore(const FileStore& files, std::string fileURL)
    : m_files(files)
    , m_fileURL(std::move(fileURL))
{
    m_files.ensureDirectory(std::filesystem::path(m_fileURL).parent_path().string());
}

bool PollerHeartbeatStore::claim(double intervalSeconds, Instant now)
{
    const PollerHeartbeat heartbeat{schemaVersion, std::string(ownSource), intervalSeconds, now,
                                    ::getpid()};
    const auto bytes = heartbeat.encode();
    return bytes && m_files.write(*bytes, m_fileURL);
}

std::optional<double> PollerHeartbeatStore::foreignCoverageWindow(Instant now) const
{
    const FileContents contents = readFile(m_fileURL);
    const auto heartbeat =
        contents.status == ReadStatus::ok ? PollerHeartbeat::decode(contents.bytes) : std::nullopt;
    if (!heartbeat || heartbeat->schemaVersion > schemaVersion || heartbeat->source == ownSource)
        return std::nullopt;
    const double age = secondsBetween(heartbeat->updatedAt, now);
    const double window = std::max(intervalsCovered * heartbeat->intervalSeconds, leastCoverage);
    if (age < -toleratedClockSkew || age >= window)
        return std::nullopt;
    return window;
}

} // namespace vellumor
