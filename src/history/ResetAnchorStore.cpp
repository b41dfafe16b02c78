#include "history/ResetAnchorStore.h"

#include "base/Format.h"
#include "base/Json.h"
#include "base/StrictReader.h"
#include "base/VersionedFile.h"
#include "history/Projection.h"
#include "store/FileReader.h"

#include <cmath>
#include <set>

namespace vellumor {

namespace {

constexpr int anchorsVersion = 1;
constexpr double toleratedDrift = 300.0; // seconds from a whole number of periods
constexpr double toleratedJitter = 2.0;  // seconds in which two reports count as one

// Nothing for a window that has no cadence, or no reset time to learn from.
std::optional<double> cadenceOf(const LimitWindow& window)
{
    if (!window.resetsAt || window.kind == "session" || window.group == "session")
        return std::nullopt;
    return Projection::windowLength(window.kind, window.group);
}

bool isOffCadence(const ResetAnchor& previous, Instant report, double cadence)
{
    const double moved = secondsBetween(previous.resetsAt, report);
    return std::fabs(moved - cadence * std::round(moved / cadence)) > toleratedDrift;
}

bool isSameReport(const ResetAnchor& previous, const ResetAnchor& candidate)
{
    return std::fabs(secondsBetween(previous.resetsAt, candidate.resetsAt)) <= toleratedJitter &&
           previous.offCadence == candidate.offCadence;
}

// True when the anchor has changed.
bool learn(AnchorsByKind& anchors, const LimitWindow& window)
{
    const auto cadence = cadenceOf(window);
    if (!cadence)
        return false;
    const auto previous = anchors.find(window.kind);
    if (previous == anchors.end()) {
        anchors[window.kind] = {*window.resetsAt, false};
        return true;
    }
    const ResetAnchor candidate{*window.resetsAt,
                                isOffCadence(previous->second, *window.resetsAt, *cadence)};
    if (isSameReport(previous->second, candidate))
        return false;
    previous->second = candidate;
    return true;
}

std::optional<AnchorsByKind> readAnchors(const Json& json)
{
    if (!json.is_object())
        return std::nullopt;
    AnchorsByKind anchors;
    for (const auto& [kind, value] : json.items()) {
        StrictReader reader(value);
        ResetAnchor& anchor = anchors[kind];
        reader.required("resetsAt", anchor.resetsAt, Format::parseISO8601);
        reader.required("offCadence", anchor.offCadence);
        if (!reader.good())
            return std::nullopt;
    }
    return anchors;
}

Json encode(const AnchorsByKind& anchors)
{
    Json json = Json::object();
    for (const auto& [kind, anchor] : anchors)
        json[kind] = {{"resetsAt", Format::isoFractional(anchor.resetsAt)},
                      {"offCadence", anchor.offCadence}};
    return json;
}

} // namespace

ResetAnchorStore::ResetAnchorStore(const FileStore& files, std::string fileURL)
    : m_files(files)
    , m_fileURL(std::move(fileURL))
{
}

ResetAnchors ResetAnchorStore::load() const
{
    return loadFrom(m_fileURL);
}

void ResetAnchorStore::record(const Usage& usage, const std::string& configDir)
{
    ResetAnchors all = load();
    AnchorsByKind anchors = all[configDir];
    bool changed = false;
    for (const LimitWindow& window : usage.windows)
        changed = learn(anchors, window) || changed;
    if (!changed)
        return;
    all[configDir] = std::move(anchors);
    save(all);
}

void ResetAnchorStore::prune(const std::vector<std::string>& keptConfigDirs)
{
    const std::set<std::string> kept(keptConfigDirs.begin(), keptConfigDirs.end());
    ResetAnchors anchors = load();
    std::erase_if(anchors, [&](const auto& entry) { return !kept.contains(entry.first); });
    save(anchors);
}

void ResetAnchorStore::save(const ResetAnchors& anchors)
{
    Json byDirectory = Json::object();
    for (const auto& [configDir, byKind] : anchors)
        byDirectory[configDir] = encode(byKind);
    const Json json = {{"schemaVersion", anchorsVersion}, {"anchors", std::move(byDirectory)}};
    if (const auto bytes = writeJson(json, JsonLayout::pretty))
        m_files.write(*bytes, m_fileURL);
}

ResetAnchors ResetAnchorStore::loadFrom(const std::string& fileURL)
{
    const FileContents contents = readFile(fileURL);
    return contents.status == ReadStatus::ok ? decode(contents.bytes) : ResetAnchors();
}

ResetAnchors ResetAnchorStore::decode(std::string_view bytes)
{
    const auto json = parseJsonObject(bytes);
    if (!json)
        return {};
    const Json* byDirectory = entriesOf(*json, "anchors", anchorsVersion);
    if (byDirectory == nullptr || !byDirectory->is_object())
        return {};
    ResetAnchors all;
    for (const auto& [configDir, value] : byDirectory->items()) {
        auto anchors = readAnchors(value);
        if (!anchors)
            return {};
        all[configDir] = *std::move(anchors);
    }
    return all;
}

} // namespace vellumor
