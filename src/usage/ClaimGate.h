#pragma once

#include <map>
#include <string>
#include <vector>

// ClaimGate: whether this program may tell others that it polls. Pure.
namespace vellumor::ClaimGate {

// False when every account in `rotation` keeps failing to decode what the endpoint says: nothing
// comes of the polling then, and nobody should rely on it. One failure of one account is forgiven.
// `parseFailStreaks` counts failures in a row by account id; an id without one has none.
[[nodiscard]] bool shouldClaim(const std::map<std::string, int>& parseFailStreaks,
                               const std::vector<std::string>& rotation);

} // namespace vellumor::ClaimGate
