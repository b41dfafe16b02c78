#include "store/PresenceMarker.h"

#include "base/Format.h"
#include "base/Json.h"
#include "base/StrictReader.h"
#include "store/FileReader.h"

namespace vellumor::PresenceMarker {

namespace {

constexpr int schemaVersion = 1;
constexpr std::string_view ownName = "vellumor";
constexpr std::size_t dayLength = 10; // of a date's text: "2026-03-01"

std::string markerPath(std::string_view name, const std::string& base)
{
    return directory(base) + "/" + std::string(name) + ".json";
}

Json readMarker(std::string_view name, const std::string& base)
{
    const auto contents = readFile(markerPath(name, base));
    if (contents.status != ReadStatus::ok)
        return Json::object();
    return parseJsonObject(contents.bytes).value_or(Json::object());
}

} // namespace

std::string directory(const std::string& base)
{
    return base + "/presence";
}

bool writeOwn(const FileStore& files, const std::string& version, Instant now,
              const std::string& base)
{
    files.ensureDirectory(directory(base));
    const std::string date = Format::isoFractional(now);
    const auto mark = [&](const Json& present) -> std::optional<Json> {
        StrictReader reader(present);
        std::string updatedAt;
        reader.optional("updatedAt", updatedAt);
        if (updatedAt.substr(0, dayLength) == date.substr(0, dayLength))
            return std::nullopt;
        std::string firstSeenAt;
        reader.optional("firstSeenAt", firstSeenAt);
        Json marked = present;
        marked["schemaVersion"] = schemaVersion;
        marked["source"] = ownName;
        marked["version"] = version;
        marked["updatedAt"] = date;
        if (firstSeenAt.empty())
            marked["firstSeenAt"] = date;
        return marked;
    };
    FileStore::Update update;
    update.currentSchemaVersion = schemaVersion;
    const auto outcome = files.updateJSONObject(markerPath(ownName, base), update, mark);
    return outcome != FileStore::UpdateOutcome::failed;
}

std::optional<Presence> read(std::string_view name, const std::string& base)
{
    const Json json = readMarker(name, base);
    StrictReader reader(json);
    Presence presence;
    reader.required("source", presence.source);
    reader.required("version", presence.version);
    reader.required("firstSeenAt", presence.firstSeenAt);
    reader.required("updatedAt", presence.updatedAt);
    if (!reader.good())
        return std::nullopt;
    return presence;
}

bool siblingInstalled(std::string_view name, const std::string& base)
{
    const Json json = readMarker(name, base);
    StrictReader reader(json);
    std::string source;
    std::string firstSeenAt;
    reader.required("source", source);
    reader.required("firstSeenAt", firstSeenAt);
    return reader.good() && source == name && !firstSeenAt.empty();
}

} // namespace vellumor::PresenceMarker
