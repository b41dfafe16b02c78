#include "store/Preferences.h"

#include "base/Json.h"
#include "base/StrictReader.h"

#include <algorithm>
#include <cmath>

namespace vellumor {

namespace {

double heldThreshold(double percent)
{
    return std::clamp(percent, 1.0, 99.0);
}

// Every field that is stored as it is, by its key: one list for reading and for writing.
template <typename Record, typename Visit>
void forEachPlainField(Record& record, Visit visit)
{
    visit("schemaVersion", record.schemaVersion);
    visit("menuBarDualBars", record.menuBarDualBars);
    visit("userInterval", record.userInterval);
    visit("localCacheOnly", record.localCacheOnly);
    visit("tokenRevivalEnabled", record.tokenRevivalEnabled);
    visit("claudeBinaryPath", record.claudeBinaryPath);
    visit("notificationsEnabled", record.notificationsEnabled);
    visit("notifySession50", record.notifySession50);
    visit("notifySession90", record.notifySession90);
    visit("notifyWeekly50", record.notifyWeekly50);
    visit("notifyWeekly90", record.notifyWeekly90);
    visit("notifySessionLimit", record.notifySessionLimit);
    visit("notifyWeeklyLimit", record.notifyWeeklyLimit);
    visit("notifyQuotaReset", record.notifyQuotaReset);
    visit("notifyProjectedWeekly", record.notifyProjectedWeekly);
    visit("notifyProjectedSession", record.notifyProjectedSession);
    visit("notifyCreditBurn", record.notifyCreditBurn);
    visit("notifySessionClosing", record.notifySessionClosing);
    visit("sessionClosingLeadMinutes", record.sessionClosingLeadMinutes);
    visit("crossPromoDismissed", record.crossPromoDismissed);
}

void readMode(StrictReader& reader, MenuBarMode& mode)
{
    std::optional<std::string> name;
    reader.optional("menuBarMode", name);
    if (!name)
        return;
    if (*name == "bars")
        mode = MenuBarMode::bars;
    else if (*name == "numbers")
        mode = MenuBarMode::numbers;
    else
        reader.fail();
}

void readThresholds(StrictReader& reader, std::map<std::string, double>& thresholds)
{
    const Json* json = reader.find("customThresholds");
    if (json == nullptr)
        return;
    if (!json->is_object())
        return reader.fail();
    for (const auto& [id, value] : json->items()) {
        const auto percent = asDouble(value);
        if (!percent)
            return reader.fail();
        thresholds[id] = *percent;
    }
}

} // namespace

Preferences Preferences::clamped() const
{
    Preferences held = *this;
    held.userInterval = std::clamp(userInterval, 60.0, 1800.0);
    held.sessionClosingLeadMinutes = std::clamp(sessionClosingLeadMinutes, 5, 120);
    for (auto& [id, percent] : held.customThresholds)
        percent = heldThreshold(percent);
    return held;
}

std::optional<double> Preferences::customThreshold(const std::string& accountId) const
{
    const auto found = customThresholds.find(accountId);
    if (found == customThresholds.end())
        return std::nullopt;
    return heldThreshold(found->second);
}

std::optional<Preferences> Preferences::decode(std::string_view bytes)
{
    const auto json = parseJson(bytes);
    if (!json)
        return std::nullopt;
    StrictReader reader(*json);
    Preferences preferences;
    forEachPlainField(preferences,
                      [&](const char* key, auto& field) { reader.optional(key, field); });
    readMode(reader, preferences.menuBarMode);
    readThresholds(reader, preferences.customThresholds);
    if (!reader.good() || preferences.schemaVersion >= 2)
        return std::nullopt;
    return preferences;
}

std::optional<std::string> Preferences::encode() const
{
    Json json = Json::object();
    forEachPlainField(*this, [&](const char* key, const auto& field) { json[key] = field; });
    json["menuBarMode"] = menuBarMode == MenuBarMode::bars ? "bars" : "numbers";
    json["customThresholds"] = Json::object();
    for (const auto& [id, percent] : customThresholds)
        json["customThresholds"][id] = percent;
    return writeJson(std::move(json), JsonLayout::pretty);
}

} // namespace vellumor
