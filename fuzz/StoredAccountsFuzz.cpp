#include "Fuzz.h"

#include "accounts/StoredAccount.h"

using namespace vellumor;
using fuzz::require;

// The program's own list of accounts.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    const StoredAccounts records = decodeStoredAccounts(fuzz::textOf(bytes, size));
    const auto written = encodeStoredAccounts(records);
    require(written.has_value());
    require(decodeStoredAccounts(*written) == records);
    require(knownDirs(records).size() <= records.size());
    for (const auto& [configDir, service] : serviceOverrides(records))
        require(records.at(configDir).serviceOverride == service);
    return 0;
}
