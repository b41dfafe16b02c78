#include "store/PresenceMarker.h"

#include "base/Json.h"
#include "base/StrictReader.h"
#include "store/FileReader.h"

namespace vellumor::PresenceMarker {

namespace {

Json readMarker(std::string_view name, const std::string& base)
{
    const auto contents = readFile(directory(base) + "/" + std::string(name) + ".json");
    if (contents.status != ReadStatus::ok)
        return Json::object();
    return parseJsonObject(contents.bytes).value_or(Json::object());
}

} // namespace

std::string directory(const std::string& base)
{
    return base + "/presence";
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
