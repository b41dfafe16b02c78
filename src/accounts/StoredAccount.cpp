#include "accounts/StoredAccount.h"

#include "base/Format.h"
#include "base/Json.h"
#include "base/StrictReader.h"

namespace vellumor {

namespace {

std::optional<Removal> readRemoval(StrictReader& account)
{
    const Json* json = account.find("removal");
    if (json == nullptr)
        return std::nullopt;
    StrictReader reader(*json);
    Removal removal;
    reader.required("at", removal.at, Format::parseISO8601WholeSeconds);
    reader.optional("email", removal.email);
    reader.optional("org", removal.org);
    if (!reader.good())
        account.fail();
    return removal;
}

std::optional<StoredAccount> readAccount(const Json& json)
{
    StrictReader reader(json);
    StoredAccount account;
    reader.required("id", account.id);
    reader.required("name", account.name);
    reader.required("order", account.order);
    reader.required("tracked", account.tracked);
    reader.required("pinned", account.pinned);
    reader.optional("serviceOverride", account.serviceOverride);
    account.removal = readRemoval(reader);
    if (!reader.good())
        return std::nullopt;
    return account;
}

Json encodeRemoval(const Removal& removal)
{
    Json json = {{"at", Format::isoWholeSeconds(removal.at)}};
    if (removal.email)
        json["email"] = *removal.email;
    if (removal.org)
        json["org"] = *removal.org;
    return json;
}

Json encodeAccount(const StoredAccount& account)
{
    Json json = {{"id", account.id},
                 {"name", account.name},
                 {"order", account.order},
                 {"tracked", account.tracked},
                 {"pinned", account.pinned}};
    if (account.serviceOverride)
        json["serviceOverride"] = *account.serviceOverride;
    if (account.removal)
        json["removal"] = encodeRemoval(*account.removal);
    return json;
}

} // namespace

StoredAccounts decodeStoredAccounts(std::string_view bytes)
{
    const auto json = parseJsonObject(bytes);
    if (!json)
        return {};
    StrictReader reader(*json);
    int schemaVersion = 0;
    reader.required("schemaVersion", schemaVersion);
    const Json* accounts = reader.find("accounts");
    if (!reader.good() || accounts == nullptr || !accounts->is_object())
        return {};
    StoredAccounts records;
    for (const auto& [configDir, record] : accounts->items()) {
        auto account = readAccount(record);
        if (!account)
            return {};
        records.emplace(configDir, *std::move(account));
    }
    return records;
}

std::optional<std::string> encodeStoredAccounts(const StoredAccounts& records)
{
    Json accounts = Json::object();
    for (const auto& [configDir, record] : records)
        accounts[configDir] = encodeAccount(record);
    return writeJson({{"schemaVersion", 1}, {"accounts", std::move(accounts)}},
                     JsonLayout::compact);
}

std::vector<std::string> knownDirs(const StoredAccounts& records)
{
    std::vector<std::string> dirs;
    for (const auto& [configDir, record] : records) {
        if (!record.isRemoved())
            dirs.push_back(configDir);
    }
    return dirs;
}

std::map<std::string, std::string> serviceOverrides(const StoredAccounts& records)
{
    std::map<std::string, std::string> overrides;
    for (const auto& [configDir, record] : records) {
        if (record.serviceOverride)
            overrides.emplace(configDir, *record.serviceOverride);
    }
    return overrides;
}

} // namespace vellumor
