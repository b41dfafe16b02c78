#include "diagnostics/crash/CrashReportState.h"

#include "base/Json.h"
#include "base/StrictReader.h"
#include "store/FileReader.h"

#include <algorithm>

namespace vellumor {

namespace {

constexpr const char* incidentsKey = "consumedIncidents";
constexpr const char* daysKey = "lastReportedDay";

bool areTexts(const Json& values)
{
    return std::all_of(values.begin(), values.end(),
                       [](const Json& value) { return value.is_string(); });
}

} // namespace

std::optional<CrashReportState> CrashReportState::decode(std::string_view bytes)
{
    const auto json = parseJsonObject(bytes);
    if (!json)
        return std::nullopt;
    const StrictReader reader(*json);
    const Json* incidents = reader.find(incidentsKey);
    const Json* days = reader.find(daysKey);
    if (incidents == nullptr || !incidents->is_array() || !areTexts(*incidents) ||
        days == nullptr || !days->is_object() || !areTexts(*days))
        return std::nullopt;
    CrashReportState state;
    incidents->get_to(state.consumedIncidents);
    days->get_to(state.lastReportedDay);
    return state;
}

std::optional<std::string> CrashReportState::encode() const
{
    return writeJson({{incidentsKey, consumedIncidents}, {daysKey, lastReportedDay}},
                     JsonLayout::compact);
}

CrashReportState CrashReportState::load(const std::string& fileURL)
{
    const FileContents contents = readFile(fileURL);
    if (contents.status != ReadStatus::ok)
        return {};
    return decode(contents.bytes).value_or(CrashReportState());
}

void CrashReportState::save(const FileStore& files, const std::string& fileURL) const
{
    if (const auto bytes = encode())
        files.write(*bytes, fileURL);
}

std::string CrashReportState::fileURL(const std::string& vellumorFolder)
{
    return vellumorFolder + "/crash-state.json";
}

bool CrashReportState::isConsumed(const CrashDigest& digest) const
{
    return std::find(consumedIncidents.begin(), consumedIncidents.end(), digest.incidentID) !=
           consumedIncidents.end();
}

void CrashReportState::record(const CrashDigest& digest, const std::string& today, Sent sent)
{
    if (!digest.incidentID.empty() && !isConsumed(digest))
        consumedIncidents.push_back(digest.incidentID);
    if (consumedIncidents.size() > maxIncidents) {
        const auto surplus = static_cast<std::ptrdiff_t>(consumedIncidents.size() - maxIncidents);
        consumedIncidents.erase(consumedIncidents.begin(), consumedIncidents.begin() + surplus);
    }
    if (sent == Sent::yes)
        lastReportedDay[digest.signature] = today;
}

} // namespace vellumor
