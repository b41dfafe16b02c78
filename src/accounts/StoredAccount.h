#pragma once

#include "base/Instant.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vellumor {

// When an account was hidden, and who was signed in then: so that a scan can tell whether it is
// somebody else by now.
struct Removal {
    Instant at{};
    std::optional<std::string> email;
    std::optional<std::string> org;
    bool operator==(const Removal&) const = default;
};

// What is kept about one config directory.
struct StoredAccount {
    std::string id;
    std::string name;
    int order = 0;
    bool tracked = true;
    bool pinned = false;
    std::optional<std::string> serviceOverride;
    std::optional<Removal> removal; // present while the account is hidden
    bool operator==(const StoredAccount&) const = default;

    [[nodiscard]] bool isRemoved() const { return removal.has_value(); }
};

// By canonical config directory.
using StoredAccounts = std::map<std::string, StoredAccount>;

// The file accounts.json, version 1. Any version is read, as long as it has the keys; one missing
// key or wrong type makes the whole file count as empty.
[[nodiscard]] StoredAccounts decodeStoredAccounts(std::string_view bytes);
// Nothing when a text in it is not valid UTF-8.
[[nodiscard]] std::optional<std::string> encodeStoredAccounts(const StoredAccounts& records);

// The keys of the records that are not hidden.
[[nodiscard]] std::vector<std::string> knownDirs(const StoredAccounts& records);
// Config directory to the credential service that the user forced on it, hidden records included.
[[nodiscard]] std::map<std::string, std::string> serviceOverrides(const StoredAccounts& records);

} // namespace vellumor
