#include "Fuzz.h"

#include "accounts/SharedAccountsStore.h"
#include "base/Json.h"

using namespace vellumor;
using fuzz::require;

namespace {

Json fileOf(const SharedIdentities& identities)
{
    Json accounts = Json::object();
    for (const auto& [configDir, identity] : identities) {
        accounts[configDir] = {
            {"id", identity.id}, {"name", identity.name}, {"order", identity.order}};
        if (identity.serviceOverride)
            accounts[configDir]["serviceOverride"] = *identity.serviceOverride;
    }
    return {{"schemaVersion", 1}, {"accounts", std::move(accounts)}};
}

} // namespace

// The file of identities that a sibling application writes too.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    const auto decoded = SharedAccountsStore::decode(fuzz::textOf(bytes, size));
    require(decoded.malformed >= 0);
    const auto written = writeJson(fileOf(decoded.identities), JsonLayout::pretty);
    require(written.has_value());
    const auto again = SharedAccountsStore::decode(*written);
    require(again.identities == decoded.identities && again.malformed == 0);
    return 0;
}
