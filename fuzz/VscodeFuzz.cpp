#include "Fuzz.h"

#include "usage/caches/VscodeStatusCache.h"

#include <cmath>

using namespace vellumor;
using fuzz::require;

namespace {

Usage readingOf(Instant fetchedAt)
{
    Usage usage;
    usage.fetchedAt = fetchedAt;
    usage.windows = {{"seven_day_opus", "weekly", 3, "warning", fuzz::now, true, "Opus"},
                     {"session", "session", 1, "normal", std::nullopt, false, std::nullopt}};
    usage.extraUsage = ExtraUsage();
    return usage;
}

} // namespace

// The file of Claude Code's extension for VS Code.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    const auto snapshot = VscodeStatusCache::parse(fuzz::textOf(bytes, size));
    const Usage base = readingOf(fuzz::now);
    if (!snapshot) {
        require(VscodeStatusCache::merge(base, snapshot) == base);
        require(!VscodeStatusCache::merge(std::nullopt, snapshot));
        return 0;
    }
    require(std::isfinite(snapshot->util5h) && std::isfinite(snapshot->util7d));
    const auto alone = VscodeStatusCache::merge(std::nullopt, snapshot);
    require(alone && alone->windows.size() == 2 && alone->fetchedAt == snapshot->updatedAt);
    require(VscodeStatusCache::merge(alone, snapshot) == alone);
    const auto merged = VscodeStatusCache::merge(base, snapshot);
    require(merged && merged->windows.size() == base.windows.size());
    require(merged->windows[0] == base.windows[0] && merged->extraUsage == base.extraUsage);
    require((*merged == base) == (snapshot->updatedAt <= base.fetchedAt));
    require(merged->fetchedAt == std::max(base.fetchedAt, snapshot->updatedAt));
    return 0;
}
