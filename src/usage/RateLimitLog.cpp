#include "usage/RateLimitLog.h"

#include "base/Format.h"
#include "base/Json.h"
#include "base/Text.h"
#include "store/FileReader.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <filesystem>

namespace vellumor {

namespace {

// JSON has no word for an infinite number, which a server may send; such a one is left out.
void put(Json& json, const char* key, const std::optional<double>& number)
{
    if (number && std::isfinite(*number))
        json[key] = *number;
}

// The last `most` lines that are not empty, oldest first.
std::vector<std::string> readLines(const std::string& fileURL, std::size_t most)
{
    const FileContents contents = readFile(fileURL);
    std::vector<std::string> lines;
    if (contents.status != ReadStatus::ok || !Text::isValidUtf8(contents.bytes))
        return lines;
    std::string_view rest = contents.bytes;
    while (!rest.empty() && lines.size() < most) {
        const auto feed = rest.rfind('\n');
        const std::size_t begin = feed == std::string_view::npos ? 0 : feed + 1;
        if (begin < rest.size())
            lines.emplace_back(rest.substr(begin));
        rest = rest.substr(0, feed == std::string_view::npos ? 0 : feed);
    }
    std::reverse(lines.begin(), lines.end());
    return lines;
}

} // namespace

std::optional<std::string> RateLimitEntry::encode() const
{
    if (!std::isfinite(effectiveIntervalSeconds) || !std::isfinite(backoffSeconds))
        return std::nullopt;
    Json json = {
        {"at", Format::isoWholeSeconds(at)}, {"configDir", configDir}, {"trigger", trigger}};
    put(json, "sinceLastRequestSeconds", sinceLastRequestSeconds);
    if (lastRequestConfigDir)
        json["lastRequestConfigDir"] = *lastRequestConfigDir;
    json["effectiveIntervalSeconds"] = effectiveIntervalSeconds;
    json["backoffSeconds"] = backoffSeconds;
    put(json, "retryAfterSeconds", retryAfterSeconds);
    return writeJson(std::move(json), JsonLayout::compact, JsonSlashes::plain);
}

RateLimitLog::RateLimitLog(const FileStore& files, std::string fileURL)
    : m_files(files)
    , m_fileURL(std::move(fileURL))
{
    m_files.ensureDirectory(std::filesystem::path(m_fileURL).parent_path().string());
}

void RateLimitLog::record(const RateLimitEntry& entry)
{
    auto line = entry.encode();
    if (!line)
        return;
    std::string bytes;
    for (const std::string& kept :
         trimmed(readLines(m_fileURL, maxEntries), *std::move(line), maxEntries))
        bytes.append(kept).append("\n");
    m_files.write(bytes, m_fileURL);
}

std::vector<std::string> RateLimitLog::recent(int n) const
{
    return recentIn(m_fileURL, n);
}

std::vector<std::string> RateLimitLog::recentIn(const std::string& fileURL, int n)
{
    assert(n >= 0);
    return readLines(fileURL, static_cast<std::size_t>(n));
}

std::vector<std::string> RateLimitLog::trimmed(std::vector<std::string> existing,
                                               std::string adding, int cap)
{
    existing.push_back(std::move(adding));
    const auto most = static_cast<std::size_t>(cap);
    if (existing.size() > most)
        existing.erase(existing.begin(), existing.end() - cap);
    return existing;
}

} // namespace vellumor
