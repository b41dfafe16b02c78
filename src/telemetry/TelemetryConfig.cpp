#include "telemetry/TelemetryConfig.h"

#include "base/Json.h"
#include "base/SecureRandom.h"
#include "base/StrictReader.h"

#include <algorithm>

namespace vellumor {

namespace {

constexpr double secondsTo2001 = 978307200.0; // from 1970

std::string newInstallID()
{
    std::string id = "inst_";
    for (const char c : SecureRandom::uuid()) {
        if (c != '-')
            id += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    return id;
}

double written(Instant instant)
{
    return secondsSince1970(instant) - secondsTo2001;
}

void readDate(StrictReader& reader, const char* key, Instant& into)
{
    std::optional<double> seconds;
    reader.optional(key, seconds);
    if (seconds)
        into = instantFromSeconds(*seconds + secondsTo2001);
}

void readCount(StrictReader& reader, const char* key, int& into)
{
    reader.optional(key, into);
    into = std::max(into, 0);
}

void readTexts(StrictReader& reader, const char* key, std::vector<std::string>& into)
{
    const Json* json = reader.find(key);
    if (json == nullptr)
        return;
    if (!json->is_array())
        return reader.fail();
    for (const Json& element : *json) {
        auto text = asString(element);
        if (!text)
            return reader.fail();
        into.push_back(*std::move(text));
    }
}

void readServed(StrictReader& reader, std::map<std::string, int, std::less<>>& into)
{
    const Json* json = reader.find("servedBy");
    if (json == nullptr)
        return;
    if (!json->is_object())
        return reader.fail();
    for (const auto& [layer, value] : json->items()) {
        const auto count = asInt(value);
        if (!count)
            return reader.fail();
        into[layer] = std::max(*count, 0);
    }
}

void readCounters(StrictReader& parent, TelemetryCounters& into)
{
    const Json* json = parent.find("counters");
    if (json == nullptr)
        return;
    StrictReader reader(*json);
    readCount(reader, "popoverOpens", into.popoverOpens);
    readCount(reader, "failures", into.failures);
    readCount(reader, "reviveUnavailable", into.reviveUnavailable);
    readCount(reader, "notifications", into.notifications);
    if (!reader.good())
        parent.fail();
}

void readCaps(StrictReader& parent, TelemetryCaps& into)
{
    const Json* json = parent.find("caps");
    if (json == nullptr)
        return;
    StrictReader reader(*json);
    reader.optional("day", into.day);
    readCount(reader, "total", into.total);
    readCount(reader, "diagnostics", into.diagnostics);
    readTexts(reader, "seen", into.seen);
    readCount(reader, "dropped", into.dropped);
    if (!reader.good())
        parent.fail();
}

Json encodeCounters(const TelemetryCounters& counters)
{
    return {{"popoverOpens", counters.popoverOpens},
            {"failures", counters.failures},
            {"reviveUnavailable", counters.reviveUnavailable},
            {"notifications", counters.notifications}};
}

Json encodeCaps(const TelemetryCaps& caps)
{
    return {{"day", caps.day},
            {"total", caps.total},
            {"diagnostics", caps.diagnostics},
            {"seen", caps.seen},
            {"dropped", caps.dropped}};
}

} // namespace

TelemetryConfig TelemetryConfig::fresh(Instant now)
{
    TelemetryConfig config;
    config.installID = newInstallID();
    config.installedAt = now;
    config.countersSince = now;
    return config;
}

std::optional<TelemetryConfig> TelemetryConfig::decode(std::string_view bytes, Instant now)
{
    const auto json = parseJson(bytes);
    if (!json)
        return std::nullopt;
    StrictReader reader(*json);
    TelemetryConfig config;
    config.installedAt = now;
    config.countersSince = now;
    reader.required("schemaVersion", config.schemaVersion);
    reader.required("installID", config.installID);
    reader.optional("diagnosticsEnabled", config.diagnosticsEnabled);
    reader.optional("productAnalyticsEnabled", config.productAnalyticsEnabled);
    readDate(reader, "installedAt", config.installedAt);
    reader.optional("lastEmittedDay", config.lastEmittedDay);
    readDate(reader, "countersSince", config.countersSince);
    readCounters(reader, config.counters);
    readTexts(reader, "failureCategories", config.failureCategories);
    readServed(reader, config.servedBy);
    readCaps(reader, config.caps);
    reader.optional("multiAccountReached", config.multiAccountReached);
    if (!reader.good() || config.schemaVersion > currentVersion || config.installID.empty())
        return std::nullopt;
    return config;
}

std::optional<std::string> TelemetryConfig::encode() const
{
    Json served = Json::object();
    for (const auto& [layer, count] : servedBy)
        served[layer] = count;
    return writeJson({{"schemaVersion", schemaVersion},
                      {"installID", installID},
                      {"diagnosticsEnabled", diagnosticsEnabled},
                      {"productAnalyticsEnabled", productAnalyticsEnabled},
                      {"installedAt", written(installedAt)},
                      {"lastEmittedDay", lastEmittedDay},
                      {"countersSince", written(countersSince)},
                      {"counters", encodeCounters(counters)},
                      {"failureCategories", failureCategories},
                      {"servedBy", std::move(served)},
                      {"caps", encodeCaps(caps)},
                      {"multiAccountReached", multiAccountReached}},
                     JsonLayout::pretty);
}

void TelemetryConfig::startPeriod(Instant now, std::string today)
{
    lastEmittedDay = std::move(today);
    countersSince = now;
    counters = {};
    failureCategories.clear();
    servedBy.clear();
}

void TelemetryConfig::noteFailureCategory(const std::string& category)
{
    const auto begin = failureCategories.begin();
    const auto end = failureCategories.end();
    if (std::find(begin, end, category) == end)
        failureCategories.push_back(category);
}

} // namespace vellumor
