#include "accounts/SharedAccountsStore.h"

#include "base/Json.h"
#include "base/Log.h"
#include "store/FileReader.h"

#include <fmt/format.h>

#include <filesystem>

namespace vellumor {

namespace {

constexpr int knownVersion = 1;

Json deltaOf(const SharedIdentities& identities)
{
    Json delta = Json::object();
    for (const auto& [configDir, identity] : identities) {
        Json& record = delta[configDir];
        record = {{"id", identity.id}, {"name", identity.name}, {"order", identity.order}};
        // A null removes an override that is no longer there.
        record["serviceOverride"] =
            identity.serviceOverride ? Json(*identity.serviceOverride) : Json();
    }
    return delta;
}

// The records of the file, with an empty one for each directory that is new to it: so that the
// merge works field by field on all of them, and an absent override leaves no null behind.
Json accountsOf(const Json& object, const Json& delta)
{
    const auto present = object.find("accounts");
    Json accounts = present != object.end() && present->is_object() ? *present : Json::object();
    for (const auto& [configDir, fields] : delta.items()) {
        if (!accounts.contains(configDir) || !accounts[configDir].is_object())
            accounts[configDir] = Json::object();
    }
    return accounts;
}

} // namespace

SharedAccountsStore::SharedAccountsStore(const FileStore& files, std::string fileURL)
    : m_files(files)
    , m_fileURL(std::move(fileURL))
{
    m_files.ensureDirectory(std::filesystem::path(m_fileURL).parent_path().string());
}

SharedAccountsStore::Decoded SharedAccountsStore::decode(std::string_view bytes)
{
    const auto json = parseJsonObject(bytes);
    if (!json)
        return {};
    const auto version = json->find("schemaVersion");
    if (version != json->end() && version->is_number() &&
        version->get<double>() >= knownVersion + 1)
        return {};
    const auto accounts = json->find("accounts");
    if (accounts == json->end() || !accounts->is_object())
        return {};
    Decoded decoded;
    for (const auto& [configDir, record] : accounts->items()) {
        if (auto identity = SharedIdentity::fromJson(record))
            decoded.identities.emplace(configDir, *std::move(identity));
        else
            ++decoded.malformed;
    }
    return decoded;
}

SharedIdentities SharedAccountsStore::load() const
{
    const FileContents contents = readFile(m_fileURL);
    if (contents.status != ReadStatus::ok)
        return {};
    Decoded decoded = decode(contents.bytes);
    if (decoded.malformed >= 1)
        log(Tag::sharedAccountsStore,
            fmt::format("skipped {} malformed account record(s)", decoded.malformed));
    return std::move(decoded.identities);
}

FileStore::UpdateOutcome SharedAccountsStore::save(const SharedIdentities& identities) const
{
    const Json delta = deltaOf(identities);
    FileStore::Update update;
    update.currentSchemaVersion = knownVersion;
    return m_files.updateJSONObject(m_fileURL, update, [&](const Json& object) {
        Json changed = object;
        changed["schemaVersion"] = knownVersion;
        changed["accounts"] = FileStore::mergeAtKeyLevel(accountsOf(object, delta), delta);
        return changed;
    });
}

} // namespace vellumor
