#include "Fuzz.h"

#include "base/Json.h"
#include "usage/model/UsageCacheFile.h"

#include <cmath>

using namespace vellumor;
using fuzz::require;

// A file of the cache that the applications of the toolkit share.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    const std::string_view text = fuzz::textOf(bytes, size);
    const auto decoded = UsageCacheFile::decode(text);
    if (const auto* error = std::get_if<UsageCacheFile::DecodeError>(&decoded)) {
        require(!error->description.empty());
        return 0;
    }
    const auto& file = std::get<UsageCacheFile>(decoded);
    const Usage usage = file.usage();
    require(usage.windows.size() <= file.windows.size());
    require(usage.fetchedAt == file.fetchedAt);
    for (const LimitWindow& window : usage.windows)
        require(std::isfinite(window.percent) && window.severity == "normal");
    // As this program passes it on, and as it sets a backoff in it.
    const auto written =
        writeJson(UsageCacheFile::of(usage, fuzz::now).encode(), JsonLayout::pretty);
    require(written.has_value());
    const auto again = UsageCacheFile::decode(std::string_view(*written));
    require(std::holds_alternative<UsageCacheFile>(again));
    require(std::get<UsageCacheFile>(again).backoffUntil == fuzz::now);
    Json json = parseJsonObject(text).value();
    json["backoffUntil"] = nullptr;
    const std::string changed = writeJson(json, JsonLayout::pretty).value();
    const auto cleared = UsageCacheFile::decode(std::string_view(changed));
    require(std::holds_alternative<UsageCacheFile>(cleared));
    UsageCacheFile expected = file;
    expected.backoffUntil.reset();
    require(std::get<UsageCacheFile>(cleared) == expected);
    return 0;
}
