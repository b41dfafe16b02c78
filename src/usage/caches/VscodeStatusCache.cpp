#include "usage/caches/VscodeStatusCache.h"

#include "base/Format.h"
#include "base/Json.h"
#include "base/StrictReader.h"
#include "store/FileReader.h"

namespace vellumor::VscodeStatusCache {

namespace {

std::optional<Instant> fromSeconds(const std::optional<double>& seconds)
{
    return seconds ? std::optional(instantFromSeconds(*seconds)) : std::nullopt;
}

void take(LimitWindow& window, double percent, const std::optional<Instant>& reset)
{
    window.percent = percent;
    window.resetsAt = reset;
    window.isActive = reset.has_value();
}

LimitWindow windowOf(const char* kind, const char* group, double percent,
                     const std::optional<Instant>& reset)
{
    LimitWindow window;
    window.kind = kind;
    window.group = group;
    take(window, percent, reset);
    return window;
}

} // namespace

std::optional<Snapshot> parse(std::string_view bytes)
{
    const auto json = parseJsonObject(bytes);
    if (!json)
        return std::nullopt;
    StrictReader file(*json);
    std::string updatedAt;
    file.required("updatedAt", updatedAt);
    const auto date = Format::parseISO8601(updatedAt);
    const Json* data = file.find("usageData");
    if (!file.good() || !date || data == nullptr)
        return std::nullopt;
    StrictReader reader(*data);
    Snapshot snapshot;
    snapshot.updatedAt = *date;
    std::optional<double> reset5h;
    std::optional<double> reset7d;
    reader.optional("utilization5h", snapshot.util5h);
    reader.optional("utilization7d", snapshot.util7d);
    reader.optional("reset5hAt", reset5h);
    reader.optional("reset7dAt", reset7d);
    if (!reader.good())
        return std::nullopt;
    snapshot.reset5h = fromSeconds(reset5h);
    snapshot.reset7d = fromSeconds(reset7d);
    return snapshot;
}

std::optional<Usage> merge(std::optional<Usage> base, const std::optional<Snapshot>& snapshot)
{
    if (!snapshot)
        return base;
    if (!base || base->windows.empty())
        return Usage{{windowOf("session", "session", snapshot->util5h, snapshot->reset5h),
                      windowOf("weekly_all", "weekly", snapshot->util7d, snapshot->reset7d)},
                     std::nullopt,
                     snapshot->updatedAt};
    if (snapshot->updatedAt <= base->fetchedAt)
        return base;
    for (LimitWindow& window : base->windows) {
        if (window.kind == "session")
            take(window, snapshot->util5h, snapshot->reset5h);
        else if (window.kind == "weekly_all")
            take(window, snapshot->util7d, snapshot->reset7d);
    }
    base->fetchedAt = snapshot->updatedAt;
    return base;
}

std::optional<Snapshot> read(const std::string& configDir)
{
    const FileContents contents = readFile(configDir + "/vscode-claude-status-cache.json");
    return contents.status == ReadStatus::ok ? parse(contents.bytes) : std::nullopt;
}

} // namespace vellumor::VscodeStatusCache
