#include "usage/model/UsageCacheFile.h"

#include "base/Format.h"
#include "base/Json.h"
#include "base/StrictReader.h"

namespace vellumor {

namespace {

using CachedWindow = UsageCacheFile::CachedWindow;

// The first reason why a file is refused; empty while it is good.
class Refusal {
public:
    void note(std::string description)
    {
        if (m_description.empty())
            m_description = std::move(description);
    }
    [[nodiscard]] bool isSet() const { return !m_description.empty(); }
    [[nodiscard]] UsageCacheFile::DecodeError error() const { return {m_description}; }

private:
    std::string m_description;
};

// A date under `key`, or nothing when it is absent or null. A bad one is told to `refusal`.
std::optional<Instant> readDate(StrictReader& reader, const char* key, Refusal& refusal)
{
    std::optional<std::string> text;
    reader.optional(key, text);
    if (!text)
        return std::nullopt;
    const auto instant = Format::parseISO8601(*text);
    if (!instant)
        refusal.note("bad ISO-8601 date: " + *text);
    return instant;
}

CachedWindow readWindow(const Json& json, Refusal& refusal)
{
    StrictReader reader(json);
    CachedWindow window;
    reader.required("kind", window.kind);
    reader.required("group", window.group);
    reader.required("percent", window.percent);
    reader.required("isActive", window.isActive);
    reader.optional("scope", window.scope);
    window.resetsAt = readDate(reader, "resetsAt", refusal);
    if (!reader.good())
        refusal.note("a window lacks a key or has a wrong type");
    return window;
}

std::vector<CachedWindow> readWindows(const StrictReader& reader, Refusal& refusal)
{
    std::vector<CachedWindow> windows;
    const Json* rows = reader.find("windows");
    if (rows == nullptr || !rows->is_array()) {
        refusal.note("no array of windows");
        return windows;
    }
    for (const Json& row : *rows)
        windows.push_back(readWindow(row, refusal));
    return windows;
}

// Every field of the credits block by its key: one list for reading and for writing.
template <typename Record, typename Visit>
void forEachOptional(Record& extra, Visit visit)
{
    visit("usedCredits", extra.usedCredits);
    visit("currency", extra.currency);
    visit("decimalPlaces", extra.decimalPlaces);
    visit("monthlyLimit", extra.monthlyLimit);
    visit("utilization", extra.utilization);
    visit("userDisabled", extra.userDisabled);
    visit("spendLimitReached", extra.spendLimitReached);
    visit("creditsEverEnabled", extra.creditsEverEnabled);
}

std::optional<ExtraUsage> readExtra(const StrictReader& file, Refusal& refusal)
{
    const Json* json = file.find("extraUsage");
    if (json == nullptr)
        return std::nullopt;
    StrictReader reader(*json);
    ExtraUsage extra;
    reader.required("isEnabled", extra.isEnabled);
    forEachOptional(extra, [&](const char* key, auto& field) { reader.optional(key, field); });
    if (!reader.good())
        refusal.note("the credits block lacks a key or has a wrong type");
    return extra;
}

Json encodeExtra(const ExtraUsage& extra)
{
    Json json = {{"isEnabled", extra.isEnabled}};
    forEachOptional(extra, [&](const char* key, const auto& field) {
        if (field)
            json[key] = *field;
    });
    return json;
}

Json encodeWindow(const CachedWindow& window)
{
    Json json = {{"kind", window.kind},
                 {"group", window.group},
                 {"percent", window.percent},
                 {"isActive", window.isActive}};
    if (window.resetsAt)
        json["resetsAt"] = Format::isoFractional(*window.resetsAt);
    if (window.scope)
        json["scope"] = *window.scope;
    return json;
}

} // namespace

UsageCacheFile UsageCacheFile::of(const Usage& usage, std::optional<Instant> backoffUntil)
{
    UsageCacheFile file;
    file.fetchedAt = usage.fetchedAt;
    for (const LimitWindow& window : usage.windows)
        file.windows.push_back({window.kind, window.group, window.percent, window.resetsAt,
                                window.isActive, window.scope});
    file.extraUsage = usage.extraUsage;
    file.backoffUntil = backoffUntil;
    file.source = "vellumor";
    file.sourceVersion = "1.0.0"; // the version of this form, not of the program
    return file;
}

Usage UsageCacheFile::usage(SuppressedKinds::Digests suppressed) const
{
    Usage usage;
    usage.fetchedAt = fetchedAt;
    usage.extraUsage = extraUsage;
    for (const CachedWindow& window : windows) {
        if (!SuppressedKinds::isSuppressed(window.kind, suppressed))
            usage.windows.push_back({window.kind, window.group, window.percent, "normal",
                                     window.resetsAt, window.isActive, window.scope});
    }
    return usage;
}

std::variant<UsageCacheFile, UsageCacheFile::DecodeError> UsageCacheFile::decode(const Json& json)
{
    StrictReader reader(json);
    Refusal refusal;
    UsageCacheFile file;
    reader.required("schemaVersion", file.schemaVersion);
    const auto fetchedAt = readDate(reader, "fetchedAt", refusal);
    file.windows = readWindows(reader, refusal);
    file.extraUsage = readExtra(reader, refusal);
    file.backoffUntil = readDate(reader, "backoffUntil", refusal);
    reader.optional("source", file.source);
    reader.optional("sourceVersion", file.sourceVersion);
    if (!reader.good() || !fetchedAt)
        refusal.note("the file lacks a key or has a wrong type");
    if (refusal.isSet())
        return refusal.error();
    file.fetchedAt = *fetchedAt;
    return file;
}

std::variant<UsageCacheFile, UsageCacheFile::DecodeError>
UsageCacheFile::decode(std::string_view bytes)
{
    const auto json = parseJson(bytes);
    if (!json)
        return DecodeError{"not JSON"};
    return decode(*json);
}

Json UsageCacheFile::encode() const
{
    Json json = {{"schemaVersion", schemaVersion},
                 {"fetchedAt", Format::isoFractional(fetchedAt)},
                 {"windows", Json::array()}};
    for (const CachedWindow& window : windows)
        json["windows"].push_back(encodeWindow(window));
    if (extraUsage)
        json["extraUsage"] = encodeExtra(*extraUsage);
    if (backoffUntil)
        json["backoffUntil"] = Format::isoFractional(*backoffUntil);
    if (source)
        json["source"] = *source;
    if (sourceVersion)
        json["sourceVersion"] = *sourceVersion;
    return json;
}

} // namespace vellumor
