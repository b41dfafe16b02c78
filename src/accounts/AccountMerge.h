#pragma once

#include "accounts/Account.h"
#include "accounts/DiscoveredFacts.h"
#include "accounts/SharedIdentity.h"
#include "accounts/StoredAccount.h"

#include <functional>
#include <string>
#include <vector>

// AccountMerge: turns what a scan found into the accounts that the program shows. Pure but for
// randomSlug.
namespace vellumor::AccountMerge {

// As many accounts fit in the panel; new ones are pinned while their order is below this.
inline constexpr int pinnedByDefault = 4;

// Updates `records` in place and gives the accounts by order. Identities come from `shared` first,
// so that a rename in the sibling carries over, then from the record, else they are new, with an id
// from `slug`. A hidden account comes back only when somebody else has signed in there. Records
// that `discovered` does not mention stay as they are.
[[nodiscard]] std::vector<Account> merge(const std::vector<DiscoveredFacts>& discovered,
                                         const SharedIdentities& shared, StoredAccounts& records,
                                         const std::function<std::string()>& slug);

// Every record, hidden ones included, as the sibling is to see it.
[[nodiscard]] SharedIdentities sharedIdentities(const StoredAccounts& records);

// Six characters from "a" to "z" and "0" to "9", drawn uniformly from the system's secure source.
[[nodiscard]] std::string randomSlug();

// The name of a new account: the mail address up to its "@", else the organisation, else from the
// directory.
[[nodiscard]] std::string defaultName(const DiscoveredFacts& facts);

// The highest order among the records; -1 when there are none.
[[nodiscard]] int highestOrder(const StoredAccounts& records);

} // namespace vellumor::AccountMerge
