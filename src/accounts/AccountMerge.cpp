#include "accounts/AccountMerge.h"

#include "accounts/ConfigDir.h"
#include "base/SecureRandom.h"

#include <algorithm>

namespace vellumor::AccountMerge {

namespace {

constexpr std::string_view slugCharacters = "abcdefghijklmnopqrstuvwxyz0123456789";
constexpr int slugLength = 6;
constexpr int highestSensibleOrder =
    1'000'000'000; // what a broken file may claim must not overflow

template <typename Records>
int highestOrderOf(const Records& records)
{
    int highest = -1;
    for (const auto& [configDir, record] : records)
        highest = std::max(highest, record.order);
    return std::min(highest, highestSensibleOrder);
}

// Nothing to compare counts as the same person.
bool isSamePerson(const Removal& removal, const DiscoveredFacts& facts)
{
    if (removal.email && facts.email)
        return *removal.email == *facts.email;
    if (removal.org && facts.org)
        return *removal.org == *facts.org;
    return true;
}

SharedIdentity identityOf(const StoredAccount& record)
{
    return {record.id, record.name, record.order, record.serviceOverride};
}

Account accountOf(const StoredAccount& record, const DiscoveredFacts& facts)
{
    return {record.id,           record.name,  facts.configDir,        record.tracked,
            record.pinned,       record.order, record.serviceOverride, facts.email,
            facts.org,           facts.plan,   facts.resolvedService,  facts.tokenStatus,
            facts.tokenExpiresAt};
}

std::string_view firstPiece(std::string_view email)
{
    const auto begin = email.find_first_not_of('@');
    if (begin == std::string_view::npos)
        return {};
    return email.substr(begin, email.find('@', begin) - begin);
}

} // namespace

int highestOrder(const StoredAccounts& records)
{
    return highestOrderOf(records);
}

std::string randomSlug()
{
    std::string slug;
    for (int i = 0; i < slugLength; ++i)
        slug += slugCharacters[SecureRandom::below(slugCharacters.size())];
    return slug;
}

std::string defaultName(const DiscoveredFacts& facts)
{
    if (facts.email) {
        if (const auto piece = firstPiece(*facts.email); !piece.empty())
            return std::string(piece);
    }
    if (facts.org && !facts.org->empty())
        return *facts.org;
    return ConfigDir::derivedName(facts.configDir);
}

SharedIdentities sharedIdentities(const StoredAccounts& records)
{
    SharedIdentities identities;
    for (const auto& [configDir, record] : records)
        identities.emplace(configDir, identityOf(record));
    return identities;
}

std::vector<Account> merge(const std::vector<DiscoveredFacts>& discovered,
                           const SharedIdentities& shared, StoredAccounts& records,
                           const std::function<std::string()>& slug)
{
    int nextOrder = std::max(highestOrderOf(records), highestOrderOf(shared)) + 1;
    std::vector<Account> accounts;
    for (const DiscoveredFacts& facts : discovered) {
        const auto local = records.find(facts.configDir);
        const bool known = local != records.end();
        if (known && local->second.removal && isSamePerson(*local->second.removal, facts))
            continue;
        const auto agreed = shared.find(facts.configDir);
        SharedIdentity identity;
        if (agreed != shared.end())
            identity = agreed->second;
        else if (known)
            identity = identityOf(local->second);
        else
            identity = {slug(), defaultName(facts), nextOrder++, std::nullopt};
        const bool tracked = known ? local->second.tracked : true;
        const bool pinned =
            known ? local->second.pinned : tracked && identity.order < pinnedByDefault;
        const StoredAccount record = {identity.id, identity.name, identity.order,
                                      tracked,     pinned,        identity.serviceOverride,
                                      std::nullopt};
        records[facts.configDir] = record;
        accounts.push_back(accountOf(record, facts));
    }
    std::stable_sort(accounts.begin(), accounts.end(),
                     [](const Account& a, const Account& b) { return a.order < b.order; });
    return accounts;
}

} // namespace vellumor::AccountMerge
