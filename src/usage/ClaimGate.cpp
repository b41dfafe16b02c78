#include "usage/ClaimGate.h"

namespace vellumor::ClaimGate {

bool shouldClaim(const std::map<std::string, int>& parseFailStreaks,
                 const std::vector<std::string>& rotation)
{
    long long failures = 0;
    for (const std::string& id : rotation) {
        const auto streak = parseFailStreaks.find(id);
        if (streak == parseFailStreaks.end() || streak->second <= 0)
            return true;
        failures += streak->second;
    }
    return failures < 2; // none at all for an empty rotation
}

} // namespace vellumor::ClaimGate
