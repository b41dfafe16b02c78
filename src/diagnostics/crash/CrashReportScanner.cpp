#include "diagnostics/crash/CrashReportScanner.h"

#include "store/FileReader.h"

#include <algorithm>
#include <filesystem>

namespace vellumor::CrashReportScanner {

namespace {

constexpr std::string_view namePrefix = "Vellumor-";
constexpr std::string_view extension = ".ips";

bool isOwn(std::string_view name)
{
    return name.starts_with(namePrefix) && name.ends_with(extension);
}

} // namespace

std::vector<std::string> ownReports(const std::string& directory)
{
    namespace fs = std::filesystem;
    std::vector<std::string> paths;
    std::error_code error;
    for (fs::directory_iterator entry(directory, error), end; !error && entry != end;
         entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        if (isOwn(name))
            paths.push_back(std::string(directory).append("/").append(name));
    }
    std::sort(paths.begin(), paths.end());
    return paths;
}

std::optional<Report> parse(std::string_view data, std::string url)
{
    const auto lineEnd = data.find('\n');
    if (lineEnd == std::string_view::npos)
        return std::nullopt;
    auto header = parseJsonObject(data.substr(0, lineEnd));
    if (!header)
        return std::nullopt;
    auto body = parseJsonObject(data.substr(lineEnd + 1));
    if (!body)
        return std::nullopt;
    return Report{std::move(url), *std::move(header), *std::move(body)};
}

std::optional<CrashDigest> digestOf(const std::string& url)
{
    const FileContents contents = readFile(url);
    if (contents.status != ReadStatus::ok)
        return std::nullopt;
    const auto report = parse(contents.bytes, url);
    if (!report)
        return std::nullopt;
    return CrashDigest::make(report->header, report->body, url.substr(url.rfind('/') + 1));
}

std::vector<CrashDigest> digests(const std::string& directory, std::size_t limit)
{
    const auto paths = ownReports(directory);
    std::vector<CrashDigest> found;
    const auto end = paths.rbegin() + static_cast<std::ptrdiff_t>(std::min(limit, paths.size()));
    for (auto path = paths.rbegin(); path != end; ++path) {
        if (auto digest = digestOf(*path))
            found.push_back(*std::move(digest));
    }
    return found;
}

std::vector<CrashDigest> recentDigests(int days, Instant now, const std::string& directory)
{
    auto found = digests(directory, recentLimit);
    const Instant earliest = now - std::chrono::days(days);
    std::erase_if(found, [&](const CrashDigest& digest) {
        return !digest.crashedAt || *digest.crashedAt < earliest;
    });
    return found;
}

} // namespace vellumor::CrashReportScanner
